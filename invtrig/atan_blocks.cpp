// The constants of atan, atanpi, atan2 and atan2pi.
#include "invtrig/atan2.h"
#include "invtrig/atan_tables.h"

namespace zorp {
namespace {

constexpr RangeRows<double> double_range = {
    .bias = 0x8030000000000000,   // from 2^-1020
    .limit = 0xFDD0000000000000,  // to 2^993
};
constexpr RangeRows<float> float_range = {
    .bias = 0x81000000,   // from 2^-125
    .limit = 0xFC000000,  // to 2^123
};

// fraction and one make a float in [1, 2) of the bits of a double's fraction. base takes away the
// exponents of v and of the estimate, which is at most 1, and adds the bias: for v = 1 it leaves 1.
constexpr SeedRows reciprocal_seed_rows = {
    .fraction = 0x007FFFF8,
    .one = 0x3F800000,
    .exponent = 0xFFF0000000000000,
    .base = 0x77F0000000000000,
    .upper = 0xFFFFFFFF00000000,
};

}  // namespace

extern "C" {

const AtanDoubleBlock __zorp_datan_data_avx512 = {
    .lower = atan_quarters_lower_double_16,
    .upper = atan_quarters_upper_double_16,
    .shifter = 0x4318000000000000,     // 1.5 x 2^50
    .upper_from = 0x4318000000000010,  // the shifter + 4
    .limit = 0x401F800000000000,       // 7.875
    .one = 0x3FF0000000000000,
    .minus_one = 0xBFF0000000000000,
    .cap = 0x47F0000000000000,  // 2^128
    .quarter_turn = 0x3FF921FB54442D18,
    // atan t = t + c1 t^3 + ... + c6 t^13 on |t| <= 1/7.875: relative error 2^-54.8
    .c6 = 0x3FB2E9B9F5C4FE97,
    .c5 = 0xBFB74257C46790CC,
    .c4 = 0x3FBC71BFEFF916A0,
    .c3 = 0xBFC249248EEF04DA,
    .c2 = 0x3FC999999998741E,
    .c1 = 0xBFD555555555554D,
};

const AtanFloatBlock __zorp_satan_data_avx512 = {
    .table = atan_quarters_float_32,
    .shifter = 0x4A000000,  // 2^21
    .limit = 0x40F80000,    // 7.75
    .one = 0x3F800000,
    .minus_one = 0xBF800000,
    .cap = 0x4F800000,  // 2^32
    .quarter_turn = 0x3FC90FDB,
    // atan t = t + c1 t^3 + ... + c3 t^7 on |t| <= 1/7.75: relative error 2^-31.2
    .c3 = 0xBE0FA8DE,
    .c2 = 0x3E4CC8E2,
    .c1 = 0xBEAAAAAA,
};

const AtanDoubleShortBlock __zorp_datan_native_data = {
    .one = 0x3FF0000000000000,
    .quarter_turn = 0x3FF921FB54442D18,
    .half_turn = 0x400921FB54442D18,
    .range = double_range,
    // atan t = b[4] t + ... + b[0] t^17 + a[4] t^3 + ... + a[0] t^19
    // on |t| <= 1: relative error 2^-28.6
    .a = {0xBF5C95B5AB286A02, 0xBF9F791909CB44C4, 0xBFB56FCD7489159A, 0xBFC2414862594647,
          0xBFD55553391CE4C9},
    .b = {0x3F85E36A8CED7474, 0x3FAD6EE2DACE07AF, 0x3FBC0236E7018BA7, 0x3FC999069C08617C,
          0x3FEFFFFFFEB5A845},
};
ZORP_SAME_BLOCK(AtanDoubleShortBlock, __zorp_datan2_native_data, __zorp_datan_native_data);

const AtanFloatShortBlock __zorp_satan_native_data = {
    .one = 0x3F800000,
    .two = 0x40000000,
    .quarter_turn = 0x3FC90FDB,
    .half_turn = 0x40490FDB,
    .range = float_range,
    // atan t = b[1] t + b[0] t^5 + a[1] t^3 + a[0] t^7 on |t| <= 1: relative error 2^-12.1
    .a = {0xBD324820, 0xBEA6A8A3},
    .b = {0x3E1E481B, 0x3F7FF145},
};
ZORP_SAME_BLOCK(AtanFloatShortBlock, __zorp_satan2_native_data, __zorp_satan_native_data);

const AtanpiDoubleBlock __zorp_datanpi_data = {
    .one = 0x3FF0000000000000,
    .minus_one = 0xBFF0000000000000,
    .quarter_turn = 0x3FE0000000000000,
    .half_turn = 0x3FF0000000000000,
    .range = double_range,
    .seed = reciprocal_seed_rows,
    // atan t / pi = c[21] t + ... + c[0] t^43 on |t| <= 1: relative error 2^-52.9
    .c = {0xBEC435D571D7FB69, 0x3EFEE969B7DB1149, 0xBF26798A20DC9977, 0x3F44C3C0C907686F,
          0xBF5B8DDB0F1CD2C5, 0x3F6C3A72776AC84D, 0xBF778AC56B6FECF2, 0x3F80BAD5CF20A9ED,
          0xBF85278CBEF8B02E, 0x3F88CA8EE19B9723, 0xBF8BE48C140DF0C8, 0x3F8EEA5306D0465F,
          0xBF9124120821BA9D, 0x3F932BC4F824F7C6, 0xBF95BAC83A460E3E, 0x3F9912AF904B4DD1,
          0xBF9DA1BAA68634EC, 0x3FA21BB94433ED0A, 0xBFA7483758DF91CF, 0x3FB04C26BE3AF8D5,
          0xBFBB2995E7B7B5ED, 0x3FD45F306DC9C883},
};
ZORP_SAME_BLOCK(AtanpiDoubleBlock, __zorp_datan2pi_data, __zorp_datanpi_data);

const AtanpiDoubleShortBlock __zorp_datanpi_native_data = {
    .one = 0x3FF0000000000000,
    .minus_one = 0xBFF0000000000000,
    .quarter_turn = 0x3FE0000000000000,
    .half_turn = 0x3FF0000000000000,
    .range = double_range,
    .seed = reciprocal_seed_rows,
    // atan t / pi = b[4] t + ... + b[0] t^17 + a[4] t^3 + ... + a[0] t^19
    // on |t| <= 1: relative error 2^-28.6
    .a = {0xBF42329940F01541, 0xBF84094ECA14A044, 0xBF9B4B49880FA760, 0xBFA73E3559D3A6F6,
          0xBFBB299337E33714},
    .b = {0x3F6BDE7DB93E8B55, 0x3F92BCDB8589EE51, 0x3FA1D4B346C946CD, 0x3FB04BC92A8107F5,
          0x3FD45F306CF77B05},
};
ZORP_SAME_BLOCK(AtanpiDoubleShortBlock, __zorp_datan2pi_native_data, __zorp_datanpi_native_data);

const AtanpiFloatBlock __zorp_satanpi_data = {
    .one = 0x3F800000,
    .minus_one = 0xBF800000,
    .two = 0x40000000,
    .quarter_turn = 0x3F000000,
    .half_turn = 0x3F800000,
    .range = float_range,
    // atan t / pi = c[8] t + ... + c[0] t^17 on |t| <= 1: relative error 2^-24.3
    .c = {0x3A62DBF5, 0xBBA26EDA, 0x3C5AB246, 0xBCC21EBE, 0x3D0A6574, 0xBD391B64, 0x3D8253BA,
          0xBDD94C33, 0x3EA2F983},
};
ZORP_SAME_BLOCK(AtanpiFloatBlock, __zorp_satan2pi_data, __zorp_satanpi_data);

const AtanpiFloatShortBlock __zorp_satanpi_native_data = {
    .one = 0x3F800000,
    .minus_one = 0xBF800000,
    .two = 0x40000000,
    .quarter_turn = 0x3F000000,
    .half_turn = 0x3F800000,
    .range = float_range,
    // atan t / pi = b[1] t + b[0] t^5 + a[1] t^3 + a[0] t^7 on |t| <= 1: relative error 2^-12.1
    .a = {0xBC62FED0, 0xBDD4324D},
    .b = {0x3D4987CD, 0x3EA2F023},
};
ZORP_SAME_BLOCK(AtanpiFloatShortBlock, __zorp_satan2pi_native_data, __zorp_satanpi_native_data);

const Atan2DoubleBlock __zorp_datan2_data = {
    .quarter_turn = 0x3FF921FB54442D18,
    .half_turn = 0x400921FB54442D18,
    .range = double_range,
    // atan t = t + d2[4] t^3 + ... + d2[0] t^35 + d1[4] t^5 + ... + d1[0] t^37
    // + d0[4] t^7 + ... + d0[0] t^39 + d3[3] t^9 + ... + d3[0] t^33
    // on |t| <= 1: relative error 2^-53.7
    .d0 = {0xBEF4FDB537ABC7A3, 0xBF82B2EC618E4BAD, 0xBFA4EFA2E563C1BC, 0xBFB11084009435E0,
           0xBFC2492491EE55C7},
    .d1 = {0x3F2CED0A36665209, 0x3F914F4C661116A5, 0x3FA7EC0FBC50683B, 0x3FB3B12A49295651,
           0x3FC999999997EE34},
    .d2 = {0xBF52E67C93954C23, 0xBF9A5E83B081F69C, 0xBFAAD261EAA09954, 0xBFB745D009BADA94,
           0xBFD55555555553C5},
    .d3 = {0x3F6F5A1DAE82AFB3, 0x3FA169980CB6AD4F, 0x3FAE1749BD612DCF, 0x3FBC71C707F7D5B5},
};

const Atan2FloatBlock __zorp_satan2_data = {
    .quarter_turn = 0x3FC90FDB,
    .half_turn = 0x40490FDB,
    .range = float_range,
    // atan t = b[4] t + ... + b[0] t^17 + a[3] t^3 + ... + a[0] t^15
    // on |t| <= 1: relative error 2^-24.3
    .a = {0xBC7F2631, 0xBD987629, 0xBE1161F8, 0xBEAAAA49},
    .b = {0x3B322CC0, 0x3D2BC384, 0x3DD96474, 0x3E4CB79F, 0x3F800000},
};

const AtanHalfBlock<float> __zorp_hatan_data = {
    .one = 0x3F800000,
    .quarter_turn = 0x3FC90FDB,
    .half_turn = 0x40490FDB,
    // atan t = c0 t + c1 t^2 + ... + c4 t^5 on [0, 1]: relative error 2^-12.5
    .c4 = 0xBCA5054F,
    .c3 = 0x3E49099D,
    .c2 = 0xBECBAF63,
    .c1 = 0x3BEF4E52,
    .c0 = 0x3F7FF759,
};
ZORP_SAME_BLOCK(AtanHalfBlock<float>, __zorp_hatan2_data, __zorp_hatan_data);

const AtanHalfBlock<half> __zorp_hatan_native_data = {
    .one = 0x3C00,
    .quarter_turn = 0x3E48,
    .half_turn = 0x4248,
    // atan t = c0 t + c1 t^2 + ... + c4 t^5 on [0, 1]: relative error 2^-11.1
    .c4 = 0xA528,
    .c3 = 0x3248,
    .c2 = 0xB65D,
    .c1 = 0x1F7A,
    .c0 = 0x3C00,
};
ZORP_SAME_BLOCK(AtanHalfBlock<half>, __zorp_hatan2_native_data, __zorp_hatan_native_data);

const AtanHalfBlock<float> __zorp_hatanpi_data = {
    .one = 0x3F800000,
    .quarter_turn = 0x3F000000,
    .half_turn = 0x3F800000,
    // atan t / pi = c0 t + c1 t^2 + ... + c4 t^5 on [0, 1]: relative error 2^-12.7
    .c4 = 0xBBE635F1,
    .c3 = 0x3D826469,
    .c2 = 0xBE02608B,
    .c1 = 0x3B208BDA,
    .c0 = 0x3EA2F394,
};
ZORP_SAME_BLOCK(AtanHalfBlock<float>, __zorp_hatan2pi_data, __zorp_hatanpi_data);

const AtanHalfBlock<half> __zorp_hatanpi_native_data = {
    .one = 0x3C00,
    .quarter_turn = 0x3800,
    .half_turn = 0x3C00,
    // atan t / pi = c0 t + c1 t^2 + ... + c4 t^5 on [0, 1]: relative error 2^-11.0
    .c4 = 0x9F32,
    .c3 = 0x2C13,
    .c2 = 0xB013,
    .c1 = 0x1904,
    .c0 = 0x3518,
};
ZORP_SAME_BLOCK(AtanHalfBlock<half>, __zorp_hatan2pi_native_data, __zorp_hatanpi_native_data);

const ArcTable __datan2_g_CoutTab = atan_pairs_double_114;
ZORP_SAME_BLOCK(ArcTable, __satan2_g_CoutTab, __datan2_g_CoutTab);
ZORP_SAME_BLOCK(ArcTable, __datan2pi_g_CoutTab, __datan2_g_CoutTab);
ZORP_SAME_BLOCK(ArcTable, __satan2pi_g_CoutTab, __datan2_g_CoutTab);

}  // extern "C"
}  // namespace zorp
