// The constants of sinpi and cospi, which read the same rows.
#include "trig/sinpi.h"

namespace zorp {
extern "C" {

const SinpiDoubleBlock __zorp_dsinpi_data_avx2 = {
    .one_half = 0x3FE0000000000000,
    // sin(pi t) = c0 t + c1 t^3 + ... + c8 t^17 on |t| <= 1/2: relative error 2^-54.5
    .c0 = 0x400921FB54442D18,
    .c1 = 0xC014ABBCE625BE52,
    .c2 = 0x400466BC6775AA7D,
    .c3 = 0xBFE32D2CCE627C9E,
    .c4 = 0x3FB50783485523F4,
    .c5 = 0xBF7E3074DFB5BB14,
    .c6 = 0x3F3E8F3677C334D3,
    .c7 = 0xBEF6F7AD23B5CD51,
    .c8 = 0x3EA9D46B06CE620E,
};
ZORP_SAME_BLOCK(SinpiDoubleBlock, __zorp_dcospi_data_avx2, __zorp_dsinpi_data_avx2);

const SinpiDoubleShortBlock __zorp_dsinpi_native_data_avx2 = {
    .one_half = 0x3FE0000000000000,
    // sin(pi t) = c0 t + c1 t^3 + ... + c5 t^11 on |t| <= 1/2: relative error 2^-34.1
    .c0 = 0x400921FB54442D18,
    .c1 = 0xC014ABBCE51D46FF,
    .c2 = 0x400466BC06D54F0B,
    .c3 = 0xBFE32D12F805BE40,
    .c4 = 0x3FB501422DFC7159,
    .c5 = 0xBF7CC9E2457440BA,
};
ZORP_SAME_BLOCK(SinpiDoubleShortBlock, __zorp_dcospi_native_data_avx2,
                __zorp_dsinpi_native_data_avx2);

const SinpiFloatBlock __zorp_ssinpi_data = {
    .one_half = 0x3F000000,
    // sin(pi t) = c0 t + c1 t^3 + ... + c4 t^9 on |t| <= 1/2: relative error 2^-24.7
    .c0 = 0x40490FDB,
    .c1 = 0xC0A55DE2,
    .c2 = 0x40233479,
    .c3 = 0xBF1929AD,
    .c4 = 0x3D9F0000,
};
ZORP_SAME_BLOCK(SinpiFloatBlock, __zorp_ssinpi_native_data, __zorp_ssinpi_data);
ZORP_SAME_BLOCK(SinpiFloatBlock, __zorp_scospi_data, __zorp_ssinpi_data);
ZORP_SAME_BLOCK(SinpiFloatBlock, __zorp_scospi_native_data, __zorp_ssinpi_data);

const SinpiHalfBlock __zorp_hsinpi_data = {
    .absmask = 0x7FFF,
    .four = 0x4400,
    .one_half = 0x3800,
    // sin(pi t) = 4 t (1 + h0 + h1 t^2 + h2 t^4) on |t| <= 1/2: relative error 2^-12.4
    .h0 = 0xB2DF,
    .h1 = 0xBD25,
    .h2 = 0x38A7,
};
ZORP_SAME_BLOCK(SinpiHalfBlock, __zorp_hsinpi_native_data, __zorp_hsinpi_data);
ZORP_SAME_BLOCK(SinpiHalfBlock, __zorp_hcospi_data, __zorp_hsinpi_data);
ZORP_SAME_BLOCK(SinpiHalfBlock, __zorp_hcospi_native_data, __zorp_hsinpi_data);

}  // extern "C"
}  // namespace zorp
