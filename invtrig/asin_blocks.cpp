// The constants of asin, acos, asinpi and acospi.
#include "invtrig/asin.h"

namespace zorp {
extern "C" {

const AsinDoubleBlock __zorp_dasin_data = {
    .one_half = 0x3FE0000000000000,
    .two = 0x4000000000000000,
    .nan = 0xFFFC000000000000,
    .guard = 0x3000000000000000,  // 2^-255
    // asin r = r + c1 r^3 + ... + c12 r^25 on |r| <= 1/2: relative error 2^-54.9
    .c12 = 0x3FA07520C70EB909,
    .c11 = 0xBF90FB17F7DBB0ED,
    .c10 = 0x3F943F44BFBC3BAE,
    .c9 = 0x3F7A583395D45ED5,
    .c8 = 0x3F88F8DC2AFCCAD6,
    .c7 = 0x3F8C6DBBCB88BD57,
    .c6 = 0x3F91C6DCF538AD2E,
    .c5 = 0x3F96E89CEBDEFADD,
    .c4 = 0x3F9F1C72E13AD8BE,
    .c3 = 0x3FA6DB6DB3B445F8,
    .c2 = 0x3FB333333337E0DE,
    .c1 = 0x3FC555555555529C,
    // 1 / sqrt(1 + d/2) = 1 - d (g0 + ... + g3 d^3) on |d| <= 2^-12: relative error 2^-60.8
    .g3 = 0xBF918000993B24C3,
    .g2 = 0x3FA400006F70D42D,
    .g1 = 0xBFB7FFFFFFFFFE97,
    .g0 = 0x3FCFFFFFFFFFFF9D,
    .pi_half = 0x3FF921FB54442D18,
    .pi = 0x400921FB54442D18,
};
ZORP_SAME_BLOCK(AsinDoubleBlock, __zorp_dacos_data, __zorp_dasin_data);

const AsinDoubleShortBlock __zorp_dasin_native_data = {
    .one_half = 0x3FE0000000000000,
    .two = 0x4000000000000000,
    .nan = 0xFFFC000000000000,
    .guard = 0x3000000000000000,  // 2^-255
    // asin r = r + c1 r^3 + ... + c6 r^13 on |r| <= 1/2: relative error 2^-30.8
    .c6 = 0x3FA36C5AF645A11E,
    .c5 = 0x3F8CE147EA9E9282,
    .c4 = 0x3FA056B4151FA155,
    .c3 = 0x3FA6C8ED2A4CCE54,
    .c2 = 0x3FB33399EBF85B6A,
    .c1 = 0x3FC5555480C83A45,
    // 1 / sqrt(1 + d/2) = 1 - d (g0 + g1 d) on |d| <= 2^-12: relative error 2^-40.6
    .g1 = 0xBFB7FFFFFFFFFE97,
    .g0 = 0x3FCFFFFFFFFFFF9D,
    .pi_half = 0x3FF921FB54442D18,
    .pi = 0x400921FB54442D18,
};
ZORP_SAME_BLOCK(AsinDoubleShortBlock, __zorp_dacos_native_data, __zorp_dasin_native_data);

const AsinFloatBlock __zorp_sasin_data = {
    .one_half = 0x3F000000,
    .two = 0x40000000,
    .nan = 0xFFC00000,
    .guard = 0x2F800000,  // 2^-32
    // asin r = r + c1 r^3 + ... + c5 r^11 on |r| <= 1/2: relative error 2^-26.7
    .c5 = 0x3D2EDC07,
    .c4 = 0x3CC32A6B,
    .c3 = 0x3D3A9AB4,
    .c2 = 0x3D997C12,
    .c1 = 0x3E2AAAFF,
    // 1 / sqrt(1 + d/2) = 1 - d (g0 + g1 d) on |d| <= 2^-12: relative error 2^-37.1
    .g1 = 0xBDC00004,
    .g0 = 0x3E800001,
    .pi_half = 0x3FC90FDB,
    .pi = 0x40490FDB,
};
ZORP_SAME_BLOCK(AsinFloatBlock, __zorp_sacos_data, __zorp_sasin_data);

const AsinFloatShortBlock __zorp_sasin_native_data = {
    .one_half = 0x3F000000,
    .two = 0x40000000,
    .nan = 0xFFC00000,
    .guard = 0x2F800000,  // 2^-32
    // asin r = (1 + c0) r + c1 r^3 + c2 r^5 on |r| <= 1/2: relative error 2^-14.9
    .c2 = 0x3DC4C6AE,
    .c1 = 0x3E2876B2,
    .c0 = 0x380561A3,
    // 1 / sqrt(1 + d/2) = 1 - g0 d on |d| <= 2^-12: relative error 2^-27.4
    .g0 = 0x3E800001,
    .pi_half = 0x3FC90FDB,
    .pi = 0x40490FDB,
};
ZORP_SAME_BLOCK(AsinFloatShortBlock, __zorp_sacos_native_data, __zorp_sasin_native_data);

const AsinpiDoubleBlock __zorp_dasinpi_data = {
    .one_half = 0x3FE0000000000000,
    .one = 0x3FF0000000000000,
    // asin r / pi = inv_pi r + c1 r^3 + ... + c12 r^25 on |r| <= 1/2: relative error 2^-53.8
    .c12 = 0x3F84F4523BC020D8,
    .c11 = 0xBF759EE439EEE799,
    .c10 = 0x3F79C78AE09A5457,
    .c9 = 0x3F60C57DF579794A,
    .c8 = 0x3F6FCBA466EA069B,
    .c7 = 0x3F7219262ADC70A8,
    .c6 = 0x3F76A256C108AAED,
    .c5 = 0x3F7D2B0EA1978F74,
    .c4 = 0x3F83CE53573AD4F4,
    .c3 = 0x3F8D1A452B1C8F4E,
    .c2 = 0x3F98723A1D5E7F21,
    .c1 = 0x3FAB2995E7B7B28B,
    .inv_pi = 0x3FD45F306DC9C883,
};
ZORP_SAME_BLOCK(AsinpiDoubleBlock, __zorp_dacospi_data, __zorp_dasinpi_data);

const AsinpiDoubleShortBlock __zorp_dasinpi_native_data = {
    .one_half = 0x3FE0000000000000,
    .one = 0x3FF0000000000000,
    .two = 0x4000000000000000,
    // asin r / pi = inv_pi r + c1 r^3 + ... + c6 r^13 on |r| <= 1/2: relative error 2^-30.8
    .c6 = 0x3F88BAFFDA4549F0,
    .c5 = 0x3F7262B57524FB3B,
    .c4 = 0x3F84CD955BDDED9F,
    .c3 = 0x3F8D02B66C2AD236,
    .c2 = 0x3F9872BCE76EFA44,
    .c1 = 0x3FAB2994D916CB05,
    .inv_pi = 0x3FD45F306DC9C883,
    // 1 / sqrt(1 + d/2) = 1 - d (g0 + g1 d) on |d| <= 2^-12: relative error 2^-40.6
    .g1 = 0xBFB7FFFFFFFFFE97,
    .g0 = 0x3FCFFFFFFFFFFF9D,
};
ZORP_SAME_BLOCK(AsinpiDoubleShortBlock, __zorp_dacospi_native_data, __zorp_dasinpi_native_data);

const AsinpiFloatBlock __zorp_sasinpi_data = {
    .one_half = 0x3F000000,
    .one = 0x3F800000,
    // asin r / pi = inv_pi r + c1 r^3 + ... + c5 r^11 on |r| <= 1/2: relative error 2^-24.5
    .c5 = 0x3C5EA355,
    .c4 = 0x3BF87E20,
    .c3 = 0x3C6D978C,
    .c2 = 0x3CC36C37,
    .c1 = 0x3D594D1B,
    .inv_pi = 0x3EA2F983,
};
ZORP_SAME_BLOCK(AsinpiFloatBlock, __zorp_sacospi_data, __zorp_sasinpi_data);

const AsinpiFloatShortBlock __zorp_sasinpi_native_data = {
    .one_half = 0x3F000000,
    .one = 0x3F800000,
    // asin r / pi = c0 r + c1 r^3 + c2 r^5 on |r| <= 1/2: relative error 2^-14.9
    .c2 = 0x3CFA8B09,
    .c1 = 0x3D567E9D,
    .c0 = 0x3EA2FAD7,
};
ZORP_SAME_BLOCK(AsinpiFloatShortBlock, __zorp_sacospi_native_data, __zorp_sasinpi_native_data);

const AsinHalfBlock<float> __zorp_hasin_data = {
    .one_half = 0x3F000000,
    .minus_two = 0xC0000000,
    // asin r = c0 r + c1 r^3 + c2 r^5 on |r| <= 1/2: relative error 2^-14.9
    .c2 = 0x3DC4C6AE,
    .c1 = 0x3E2876B2,
    .c0 = 0x3F80010B,
    .quarter_turn = 0x3FC90FDB,
};
ZORP_SAME_BLOCK(AsinHalfBlock<float>, __zorp_hacos_data, __zorp_hasin_data);

const AsinHalfBlock<half> __zorp_hasin_native_data = {
    .one_half = 0x3800,
    .minus_two = 0xC000,
    // asin r = c0 r + c1 r^3 + c2 r^5 on |r| <= 1/2: relative error 2^-14.0
    .c2 = 0x2E26,
    .c1 = 0x3144,
    .c0 = 0x3C00,
    .quarter_turn = 0x3E48,
};
ZORP_SAME_BLOCK(AsinHalfBlock<half>, __zorp_hacos_native_data, __zorp_hasin_native_data);

const AsinHalfBlock<float> __zorp_hasinpi_data = {
    .one_half = 0x3F000000,
    .minus_two = 0xC0000000,
    // asin r / pi = c0 r + c1 r^3 + c2 r^5 on |r| <= 1/2: relative error 2^-14.9
    .c2 = 0x3CFA4C63,
    .c1 = 0x3D568677,
    .c0 = 0x3EA2FACF,
    .quarter_turn = 0x3F000000,
};

const AsinHalfBlock<half> __zorp_hasinpi_native_data = {
    .one_half = 0x3800,
    .minus_two = 0xC000,
    // asin r / pi = c0 r + c1 r^3 + c2 r^5 on |r| <= 1/2: relative error 2^-12.6
    .c2 = 0x27D2,
    .c1 = 0x2AB4,
    .c0 = 0x3518,
    .quarter_turn = 0x3800,
};

const AcospiHalfBlock<float> __zorp_hacospi_data = {
    .one_half = 0x3F000000,
    .one = 0x3F800000,
    // 2/pi asin(sqrt y) = sqrt y (c0 + c1 y + ... + c3 y^3) on [0, 1/2]: relative error 2^-14.4
    .c3 = 0x3D894DCF,
    .c2 = 0x3D068E3F,
    .c1 = 0x3DDCBCA3,
    .c0 = 0x3F22F7A1,
};

const AcospiHalfBlock<half> __zorp_hacospi_native_data = {
    .one_half = 0x3800,
    .one = 0x3C00,
    // 2/pi asin(sqrt y) = sqrt y (c0 + c1 y + ... + c3 y^3) on [0, 1/2]: relative error 2^-12.0
    .c3 = 0x2C4A,
    .c2 = 0x2834,
    .c1 = 0x2EE6,
    .c0 = 0x3918,
};

}  // extern "C"
}  // namespace zorp
