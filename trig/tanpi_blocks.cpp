// The constants of tanpi.
#include "trig/tanpi.h"
#include "trig/tanpi_tables.h"

namespace zorp {
extern "C" {

const TanpiDoubleBlock __zorp_dtanpi_data_avx512 = {
    .tangent = tanpi_double_16,
    .turned = tanpi_turned_double_16,
    .absmask = 0x7FFFFFFFFFFFFFFF,
    .shift = 0x42F8000000000000,  // 1.5 x 2^48: unit 1/16
    .zero = 0,
    .one = 0x3FF0000000000000,
    .infinity = 0x7FF0000000000000,
    // tan(pi f) = t0 f + t1 f^3 + ... + t5 f^11 on |f| <= 1/32: relative error 2^-54.5
    .t0 = 0x400921FB54442D18,
    .t1 = 0x4024ABBCE625BF0C,
    .t2 = 0x404466BC676D354B,
    .t3 = 0x40645FFFBF5870D4,
    .t4 = 0x40845F01BAC0427A,
    .t5 = 0x40A49CC66021FBBC,
};

const TanpiDoubleShortBlock __zorp_dtanpi_native_data_avx512 = {
    .tangent = tanpi_double_16,
    .turned = tanpi_turned_double_16,
    .absmask = 0x7FFFFFFFFFFFFFFF,
    .shift = 0x42F8000000000000,
    .zero = 0,
    .one = 0x3FF0000000000000,
    .infinity = 0x7FF0000000000000,
    // tan(pi f) = t0 f + t1 f^3 + ... + t3 f^7 on |f| <= 1/32: relative error 2^-39.2
    .t0 = 0x400921FB544403F3,
    .t1 = 0x4024ABBCEB4917AB,
    .t2 = 0x404466A2BE6CE851,
    .t3 = 0x406488F9058844E9,
};

const TanpiFloatBlock __zorp_stanpi_data_avx512 = {
    .tangent = tanpi_float_32,
    .turned = tanpi_turned_float_32,
    .absmask = 0x7FFFFFFF,
    .shift = 0x48C00000,  // 1.5 x 2^18: unit 1/32
    .zero = 0,
    .one = 0x3F800000,
    .infinity = 0x7F800000,
    // tan(pi f) = t0 f + t1 f^3 + t2 f^5 on |f| <= 1/64: relative error 2^-22.9
    .t0 = 0x40490FDB,
    .t1 = 0x4125558B,
    .t2 = 0x42242B8C,
};

const TanpiFloatShortBlock __zorp_stanpi_native_data_avx512 = {
    .tangent = tanpi_float_32,
    .turned = tanpi_turned_float_32,
    .absmask = 0x7FFFFFFF,
    .shift = 0x48C00000,
    .zero = 0,
    .one = 0x3F800000,
    .infinity = 0x7F800000,
    // tan(pi f) = t0 f + t1 f^3 on |f| <= 1/64: relative error 2^-19.2
    .t0 = 0x40490FC6,
    .t1 = 0x412601C1,
};

const TanpiHalfBlock __zorp_htanpi_data = {
    .absmask = 0x7FFF,
    .two = 0x4000,
    // tan(pi f) = (1 + u0) f + u1 f^3 + ... + u3 f^7 on |f| <= 1/4: relative error 2^-14.4
    .u0 = 0x40090D95,
    .u1 = 0x41267B99,
    .u2 = 0x420DF6AE,
    .u3 = 0x438E26A7,
};

const TanpiHalfShortBlock __zorp_htanpi_native_data = {
    .absmask = 0x7FFF,
    .two = 0x4000,
    // tan(pi f) = (1 + u0) f + u1 f^3 + u2 f^5 on |f| <= 1/4: relative error 2^-10.1
    .u0 = 0x4049,
    .u1 = 0x48E6,
    .u2 = 0x53BE,
};

}  // extern "C"
}  // namespace zorp
