// The constants of erf and erfc.
#include "special/erf.h"
#include "special/erf_tables.h"

namespace zorp {
namespace {

/// Every second point of a grid; value and derivative at the last one are taken for 0.
template <int points, class T, int entries>
constexpr GridTable<T, points> coarser(const Table<T, entries>& grid) {
  static_assert(points == (entries / 2 + 1) / 2);
  GridTable<T, points> table{};
  for (int i = 0; i < points - 1; ++i) {
    table.entry[2 * i] = grid.entry[4 * i];
    table.entry[2 * i + 1] = grid.entry[4 * i + 1];
  }
  return table;
}

}  // namespace

extern "C" {

const ErfDoubleBlock __zorp_derf_data = {
    .grid = erf_grid_double_768,
    .absmask = 0x7FFFFFFFFFFFFFFF,
    .clamp = 0x4017F80000000000,  // 5.9921875, the last point
    .shift = 0x42C0000000000000,  // 2^45: unit 1/128
    .tiny = 0x2FF0000000000000,   // 2^-256
    .imask = 0x00000000FFFFFFFF,
    // erf(z + r) = erf z + 2/sqrt(pi) e^(-z^2) r (1 + v)
    // with v = -u + (e9 + e7 u + e2 u^2 + e1 u^3) u^2 + (e10 + e8 u + e4 u^2 + e3 u^3) w
    // + (e6 + e5 u) w^2, u = z r, w = r^2
    // on |r| <= 1/256, z = 0 and |r| <= 1/256, z in [1/128, clamp]: relative error 2^-52.5
    .e1 = 0xBFA6C16DB05BDEA5,
    .e2 = 0x3FC1111235A363B1,
    .e3 = 0x3FCC71CA1C71EB57,
    .e4 = 0xBFD9999C2BE2DDA8,
    .e5 = 0xBFC5555800001B4F,
    .e6 = 0x3FB9999E2BE2F122,
    .e7 = 0xBFD55555555547F6,
    .e8 = 0x3FDFFFFFFFFFD4CD,
    .e9 = 0x3FE5555555554B0C,
    .e10 = 0xBFD5555555555555,
    // erf(z + r) = erf z + 2/sqrt(pi) e^(-z^2) r (1 + v)
    // with v = n2 u + n1 u^2 + (n4 + n3 u) w, u = z r, w = r^2
    // on |r| <= 1/256, z = 0 and |r| <= 1/256, z in [1/128, clamp]: relative error 2^-34.2
    .n1 = 0x3FE55557BBBBDCA6,
    .n2 = 0xBFF0000180001429,
    .n3 = 0x3FE0000400005666,
    .n4 = 0xBFD5555C88892F64,
};
ZORP_SAME_BLOCK(ErfDoubleBlock, __zorp_derf_native_data, __zorp_derf_data);

const ErfFloatBlock __zorp_serf_data = {
    .limit = 0x41558C5A,  // 13.3467655
    // erf x = x (p0 + p1 x^2 + ... + p12 x^24)^2 on [0, sqrt limit]: relative error 2^-23.9
    .p12 = 0xBD1C668A2871F0F1,
    .p11 = 0x3D85EADFC762D3EB,
    .p10 = 0xBDDDCB2653D80F03,
    .p9 = 0x3E2715640470DB47,
    .p8 = 0xBE65806CE17F0523,
    .p7 = 0x3E94B6C0B485F30F,
    .p6 = 0x3EA5794B95C8E8A0,
    .p5 = 0xBF0A5216B9508EDE,
    .p4 = 0x3F476DF64A40E392,
    .p3 = 0xBF799309EA0C81DC,
    .p2 = 0x3FA3A334CE602C6B,
    .p1 = 0xBFC6A948101E6367,
    .p0 = 0x3FF0FEFBD933B903,
};

const ErfFloatShortBlock __zorp_serf_native_data = {
    .limit = 0x40D74E66,  // 6.72832012
    // erf x = x (p0 + p1 x^2 + ... + p5 x^10)^2 on [0, sqrt limit]: relative error 2^-12.6
    .p5 = 0xB78F18F8,
    .p4 = 0x39F00702,
    .p3 = 0xBBAF8D5D,
    .p2 = 0x3D175FFF,
    .p1 = 0xBE34718D,
    .p0 = 0x3F87F527,
};

const ErfHalfBlock __zorp_herf_data = {
    .absmask = 0x7FFF,
    .clamp = 0x4140,  // 2.625
    // erf x = x (n0 + n1 x^2 + n2 x^4) / (d0 + d1 x^2 + ... + d3 x^6)
    // on [0, clamp]: relative error 2^-11.2
    .n2 = 0x279B,
    .n1 = 0x3101,
    .n0 = 0x3C83,
    .d3 = 0x1BBC,
    .d2 = 0x2D68,
    .d1 = 0x378C,
    .d0 = 0x3C00,
};
ZORP_SAME_BLOCK(ErfHalfBlock, __zorp_herf_native_data, __zorp_herf_data);

const ErfcDoubleBlock __zorp_derfc_data = {
    .grid = erfc_grid_double_3488,
    .absmask = 0x7FFFFFFFFFFFFFFF,
    .sign = 0x8000000000000000,
    .one = 0x3FF0000000000000,
    .clamp = 0x403B3E0000000000,  // 27.2421875, the last point
    .shift = 0x42C0000000000000,  // 2^45: unit 1/128
    .scale = 0x37F0000000000000,  // 2^-128
    .limit = 0x403B39DC41E48BFD,  // 27.226017...
    .imask = 0x00000000FFFFFFFF,
    // erfc(z + r) = erfc z - 2/sqrt(pi) e^(-z^2) r (1 + v)
    // with v = -u + (c19 + c18 u + c15 u^2 + c13 u^3 + c10 u^4 + c7 u^5 + c2 u^6 + c1 u^7) u^2
    // + (c17 + c16 u + c14 u^2 + c11 u^3 + c8 u^4 + c4 u^5 + c3 u^6) w
    // + (c12 + c9 u + c6 u^2 + c5 u^3) w^2, u = z r, w = r^2
    // on |r| <= 1/256, z in [0, clamp]: relative error 2^-54.1
    .c1 = 0xBF2282C89A04C65F,
    .c2 = 0x3F472360BAC04E70,
    .c3 = 0xBF8441DF86900A46,
    .c4 = 0x3FA117ABF1FEA28C,
    .c5 = 0xBFB56433674BA5C2,
    .c6 = 0x3FC256E8E6045CDF,
    .c7 = 0xBF6A019F4F234617,
    .c8 = 0xBFB8618412BC79EC,
    .c9 = 0xBFC5554E249FF4A7,
    .c10 = 0x3F8A019F5AEED25F,
    .c11 = 0x3FCC71C4B73B20B6,
    .c12 = 0x3FB9998F9D0729DA,
    .c13 = 0xBFA6C16C16D06420,
    .c14 = 0xBFD9999999F3D838,
    .c15 = 0x3FC11111111AB082,
    .c16 = 0x3FE0000000379730,
    .c17 = 0xBFD5555555554ADD,
    .c18 = 0xBFD555555555548A,
    .c19 = 0x3FE55555555554CF,
};

const ErfcDoubleShortBlock __zorp_derfc_native_data = {
    .grid = coarser<1744>(erfc_grid_double_3488),
    .absmask = 0x7FFFFFFFFFFFFFFF,
    .sign = 0x8000000000000000,
    .one = 0x3FF0000000000000,
    .clamp = 0x403B3C0000000000,  // 27.234375, the last point
    .shift = 0x42D0000000000000,  // 2^46: unit 1/64
    .scale = 0x37F0000000000000,  // 2^-128
    .limit = 0x403B39DC41E48BFD,  // 27.226017...
    .imask = 0x00000000FFFFFFFF,
    // erfc(z + r) = erfc z - 2/sqrt(pi) e^(-z^2) r (1 + v)
    // with v = d11 u + (d10 + d9 u + d7 u^2 + d5 u^3 + d2 u^4 + d1 u^5) u^2
    // + (d8 + d6 u + d4 u^2 + d3 u^3) w, u = z r, w = r^2
    // on |r| <= 1/128, z in [0, clamp]: relative error 2^-30.2
    .d1 = 0xBF6A1FDD30652EA1,
    .d2 = 0x3F8A1F05F5094FB6,
    .d3 = 0x3FCCBC5887DF9127,
    .d4 = 0xBFD9E0A0FBE743D2,
    .d5 = 0xBFA6C15C3DA087D4,
    .d6 = 0x3FDFFF6F976A22C5,
    .d7 = 0x3FC111066671A484,
    .d8 = 0xBFD554EE2F28F34D,
    .d9 = 0xBFD555555ADC4EA0,
    .d10 = 0x3FE555555933BC54,
    .d11 = 0xBFEFFFFFFFFEB794,
};

const ErfcFloatBlock __zorp_serfc_data = {
    .grid = erfc_grid_float_645,
    .absmask = 0x7FFFFFFF,
    .sign = 0x80000000,
    .one = 0x3F800000,
    .clamp = 0x41210000,   // 10.0625
    .shift = 0x48000000,   // 2^17: unit 1/64
    .scale = 0x27800000,   // 2^-48
    .limit = 0x4120DDFB,   // 10.0541945
    .origin = 0x40000000,  // what the shifter's encoding leaves
    // erfc(z + r) = erfc z - 2/sqrt(pi) e^(-z^2) r (1 + v)
    // with v = f6 u + f5 u^2 + f2 u^3 + f1 u^4 + (f4 + f3 u) w, u = z r, w = r^2
    // on |r| <= 1/128, z in [0, clamp]: relative error 2^-25.8
    .f1 = 0x3E08A7CA,
    .f2 = 0xBEAACF22,
    .f3 = 0x3F005B36,
    .f4 = 0xBEAB4EDB,
    .f5 = 0x3F2AAAA6,
    .f6 = 0xBF7FFFFC,
};
ZORP_SAME_BLOCK(ErfcFloatBlock, __zorp_herfc_data, __zorp_serfc_data);
ZORP_SAME_BLOCK(ErfcFloatBlock, __zorp_herfc_native_data, __zorp_serfc_data);

const ErfcFloatShortBlock __zorp_serfc_native_data = {
    .grid = coarser<323>(erfc_grid_float_645),
    .absmask = 0x7FFFFFFF,
    .sign = 0x80000000,
    .one = 0x3F800000,
    .clamp = 0x41210000,   // 10.0625
    .shift = 0x48800000,   // 2^18: unit 1/32
    .scale = 0x27800000,   // 2^-48
    .limit = 0x4120DDFB,   // 10.0541945
    .origin = 0x44000000,  // what the shifter's encoding leaves
    // erfc(z + r) = erfc z - 2/sqrt(pi) e^(-z^2) r (1 + v)
    // with v = g3 u + g2 u^2 + g1 u^3, u = z r
    // on |r| <= 1/64, z in [0, clamp]: relative error 2^-15.3
    .g1 = 0xBEAB6147,
    .g2 = 0x3F2B4F03,
    .g3 = 0xBF7FFF8B,
};

}  // extern "C"
}  // namespace zorp
