// The constants of tanh.
#include "exp/tanh.h"
#include "exp/tanh_tables.h"

namespace zorp {
extern "C" {

const TanhDoubleBlock __zorp_dtanh_data = {
    .intervals = tanh_intervals_double,
    .hmask = 0x7FF8000000000000,  // exponent and one bit
    .base = 0x3FC0000000000000,   // 0.125
    .top = 0x0078000000000000,    // 15
    .limit = high_word(0x7FE00000),
    .absmask = 0x7FFFFFFFFFFFFFFF,
    .sign = 0x8000000000000000,
};
ZORP_SAME_BLOCK(TanhDoubleBlock, __zorp_dtanh_native_data, __zorp_dtanh_data);

const TanhFloatBlock __zorp_stanh_data = {
    .intervals = tanh_intervals_float,
    .hmask = 0x7FE00000,  // exponent and two bits
    .base = 0x3D400000,   // 0.046875
    .top = 0x03E00000,    // 31
    .limit = 0x7F000000,
    .absmask = 0x7FFFFFFF,
    .sign = 0x80000000,
};

// tanh x = x (1 + b0 + b1 x^2 + b2 x^4) / (1 + a1 x^2 + a2 x^4) on [0, 5]: relative error 2^-14.2
const TanhFloatShortBlock __zorp_stanh_native_data_avx2 = {
    .a2 = 0x3C520A84,
    .a1 = 0x3EDEF102,
    .one = 0x3F800000,
    .b2 = 0x3A2FC8E6,
    .b1 = 0x3DD1C060,
    .b0 = 0xB859E195,
    .absmask = 0x7FFFFFFF,
    .big = 0x40A00000,  // 5.0
};

// tanh x = x + x (n0 + n1 x^2 + n2 x^4) / (1 + d1 x^2 + d2 x^4) on [0, 4.5]: relative error 2^-11.8
const TanhHalfBlock __zorp_htanh_data = {
    .absmask = 0x7FFF,
    .clamp = 0x4480,  // 4.5
    .n2 = 0xBC51B337,
    .n1 = 0xBEAA9D76,
    .n0 = 0xB7395BE5,
    .d2 = 0x3C5DF16D,
    .d1 = 0x3EE03FC5,
    .one = 0x3F800000,
};

// tanh x = x + x (t0[j] + t1[j] x) on [j/8, (j + 1)/8], j = 0..26
// and [27/8, clamp], j = 27: relative error 2^-9.9
const TanhHalfShortBlock __zorp_htanh_native_data = {
    .t0 = {{
        0x0C00, 0x216A, 0x273E, 0x2A6C, 0x2C9C, 0x2DC3, 0x2E7C, 0x2EB1, 0x2E5A, 0x2D82, 0x2C3A,
        0x2932, 0x21B4, 0xA561, 0xAB02, 0xADB5, 0xAFE8, 0xB109, 0xB216, 0xB319, 0xB408, 0xB47E,
        0xB4EE, 0xB558, 0xB5BC, 0xB61A, 0xB673, 0xB6C6, 0xB715, 0xB75F, 0xB7A5, 0xB7E7,
    }},
    .t1 = {{
        0xA94D, 0xAFC2, 0xB228, 0xB404, 0xB4B8, 0xB52F, 0xB56D, 0xB57D, 0xB567, 0xB537, 0xB4F6,
        0xB4AA, 0xB45A, 0xB409, 0xB373, 0xB2DD, 0xB250, 0xB1CE, 0xB156, 0xB0E9, 0xB086, 0xB02C,
        0xAFB6, 0xAF22, 0xAE9D, 0xAE25, 0xADB7, 0xAD54, 0xACFA, 0xACA9, 0xAC5E, 0xAC1A,
    }},
    .absmask = 0x7FFF,
    .clamp = 0x42E3,  // 3.443
    .shift = 0x5A00,  // 192.0: unit 1/8
};

}  // extern "C"
}  // namespace zorp
