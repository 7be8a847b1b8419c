// The constants of cbrt and rcbrt. The two tiers of half run one algorithm and share one block.
#include "pow/cbrt.h"
#include "pow/cbrt_tables.h"

namespace zorp {
extern "C" {

const CbrtDoubleBlock __zorp_dcbrt_data_avx512 = {
    .s = cube_root_power_double,
    .sl = cube_root_power_low_double,
    .t = cube_root_point_double,
    .tl = cube_root_point_low_double,
    .shifter = 0x4338000000000000,
    .sign = 0x8000000000000000,
    .third = 0x3FD5555555555556,
    .half_shifter = 0x4320000000000000,
    .three = 0x4008000000000000,
    .one = 0x3FF0000000000000,
    // (1 + r)^(1/3) = 1 + k1 r + ... + k10 r^10 on |r| <= 1/16: relative error 2^-59.6
    .k10 = 0xBF882E3B6ADECA62,
    .k9 = 0x3F8BDA24BAE48875,
    .k8 = 0xBF9036B87C71D55F,
    .k7 = 0x3F9374ED9398B914,
    .k6 = 0xBF98090D77F2468E,
    .k5 = 0x3F9EE71141DCF569,
    .k4 = 0xBFA511E8D2B0363E,
    .k3 = 0x3FAF9ADD3C0B7E31,
    .k2 = 0xBFBC71C71C71C741,
    .k1 = 0x3FD5555555555557,
};

const CbrtDoubleShortBlock __zorp_dcbrt_native_data_avx512 = {
    .s = cube_root_power_double,
    .t = cube_root_point_double,
    .shifter = 0x4338000000000000,
    .sign = 0x8000000000000000,
    .third = 0x3FD5555555555556,
    .half_shifter = 0x4320000000000000,
    .three = 0x4008000000000000,
    .one = 0x3FF0000000000000,
    // (1 + r)^(1/3) = 1 + k1 r + ... + k4 r^4 on |r| <= 1/16: relative error 2^-28.9
    .k4 = 0xBFA5270E22838B58,
    .k3 = 0x3FAFAE4431211E62,
    .k2 = 0xBFBC71C22FD7918A,
    .k1 = 0x3FD55554B9AD3FAD,
};

const CbrtFloatBlock __zorp_scbrt_data_avx512 = {
    .s = cube_root_power_float,
    .sl = cube_root_power_low_float,
    .t = cube_root_point_float,
    .tl = cube_root_point_low_float,
    .shifter = 0x4B400000,
    .sign = 0x80000000,
    .third = 0x3EAAAAAB,
    .half_shifter = 0x4A800000,
    .three = 0x40400000,
    .one = 0x3F800000,
    // (1 + r)^(1/3) = 1 + k1 r + ... + k3 r^3 on |r| <= 1/32: relative error 2^-26.5
    .k3 = 0x3D7D057C,
    .k2 = 0xBDE3A363,
    .k1 = 0x3EAAAAAA,
};

const CbrtFloatShortBlock __zorp_scbrt_native_data_avx512 = {
    .s = cube_root_power_float,
    .t = cube_root_point_float,
    .shifter = 0x4B400000,
    .sign = 0x80000000,
    .third = 0x3EAAAAAB,
    .half_shifter = 0x4A800000,
    .three = 0x40400000,
    .one = 0x3F800000,
    // (1 + r)^(1/3) = 1 + k1 r on |r| <= 1/32: relative error 2^-13.1
    .k1 = 0x3EAAB29A,
};

const CbrtHalfBlock __zorp_hcbrt_data = {
    .t = cube_root_half,
    .one = 0x3C00,
    .sign = 0x8000,
    .shifter = 0x6600,
    // (1 + z)^(1/3) = 1 + k1 z + ... + k3 z^3 on [0, 1]: relative error 2^-11.2
    .k3 = 0x277C,
    .k2 = 0xAE84,
    .k1 = 0x3554,
};
ZORP_SAME_BLOCK(CbrtHalfBlock, __zorp_hcbrt_native_data, __zorp_hcbrt_data);

const RcbrtDoubleBlock __zorp_dinvcbrt_data = {
    .s = inverse_cube_root_power_double,
    .sl = inverse_cube_root_power_low_double,
    .t = inverse_cube_root_point_double,
    .tl = inverse_cube_root_point_low_double,
    .shifter = 0x4338000000000000,
    .sign = 0x8000000000000000,
    .third = 0xBFD5555555555556,
    .half_shifter = 0x4320000000000000,
    .three = 0x4008000000000000,
    .one = 0x3FF0000000000000,
    // (1 + r)^(-1/3) = 1 + k1 r + ... + k10 r^10 on |r| <= 1/16: relative error 2^-57.6
    .k10 = 0x3FB492CBDC40DCD9,
    .k9 = 0xBFB6053C464E0B59,
    .k8 = 0x3FB78EB9CF4988CD,
    .k7 = 0xBFB9B3079EB28FF6,
    .k6 = 0x3FBC67CA1F92050A,
    .k5 = 0xBFBFF4C356F55A30,
    .k4 = 0x3FC26FABB859141C,
    .k3 = 0xBFC61F9ADD39F21E,
    .k2 = 0x3FCC71C71C71C762,
    .k1 = 0xBFD5555555555563,
};

const RcbrtDoubleShortBlock __zorp_dinvcbrt_native_data = {
    .s = inverse_cube_root_power_double,
    .t = inverse_cube_root_point_double,
    .shifter = 0x4338000000000000,
    .sign = 0x8000000000000000,
    .third = 0xBFD5555555555556,
    .half_shifter = 0x4320000000000000,
    .three = 0x4008000000000000,
    .one = 0x3FF0000000000000,
    // (1 + r)^(-1/3) = 1 + k1 r + ... + k5 r^5 on |r| <= 1/16: relative error 2^-31.1
    .k5 = 0xBFC011D13CBC14C3,
    .k4 = 0x3FC2850E4D89FDF4,
    .k3 = 0xBFC61F8E7DB62D5E,
    .k2 = 0x3FCC71BF14DA34A3,
    .k1 = 0xBFD55555562C7918,
};

const RcbrtFloatBlock __zorp_sinvcbrt_data = {
    .s = inverse_cube_root_power_float,
    .sl = inverse_cube_root_power_low_float,
    .t = inverse_cube_root_point_float,
    .tl = inverse_cube_root_point_low_float,
    .shifter = 0x4B400000,
    .sign = 0x80000000,
    .third = 0xBEAAAAAB,
    .half_shifter = 0x4A800000,
    .three = 0x40400000,
    .one = 0x3F800000,
    // (1 + r)^(-1/3) = 1 + k1 r + ... + k4 r^4 on |r| <= 1/32: relative error 2^-31.4
    .k4 = 0x3E13A8E2,
    .k3 = 0xBE3128D2,
    .k2 = 0x3E638E35,
    .k1 = 0xBEAAAAA9,
};

const RcbrtFloatShortBlock __zorp_sinvcbrt_native_data = {
    .s = inverse_cube_root_power_float,
    .t = inverse_cube_root_point_float,
    .shifter = 0x4B400000,
    .sign = 0x80000000,
    .third = 0xBEAAAAAB,
    .half_shifter = 0x4A800000,
    .three = 0x40400000,
    .one = 0x3F800000,
    // (1 + r)^(-1/3) = 1 + k1 r on |r| <= 1/32: relative error 2^-12.1
    .k1 = 0xBEAABC10,
};

const RcbrtHalfBlock __zorp_hinvcbrt_data = {
    .s = inverse_cube_root_power_float,
    .sl = inverse_cube_root_power_low_float,
    .t = inverse_cube_root_point_float,
    .shifter = 0x4B400000,
    .sign = 0x80000000,
    .third = 0xBEAAAAAB,
    .half_shifter = 0x4A800000,
    .three = 0x40400000,
    .one = 0x3F800000,
    // (1 + r)^(-1/3) = 1 + k1 r + ... + k3 r^3 on |r| <= 1/32: relative error 2^-25.3
    .k3 = 0xBE311F14,
    .k2 = 0x3E63ACF8,
    .k1 = 0xBEAAAAAA,
};
ZORP_SAME_BLOCK(RcbrtHalfBlock, __zorp_hinvcbrt_native_data, __zorp_hinvcbrt_data);

}  // extern "C"
}  // namespace zorp
