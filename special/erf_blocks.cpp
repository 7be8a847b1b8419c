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
    // (erf(z + r) - erf(z)) / (r erf'(z)) - 1 in u = z r and w = r^2, |r| <= 1/256
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
    // the same for _native
    .n1 = 0x3FE55557BBBBDCA6,
    .n2 = 0xBFF0000180001429,
    .n3 = 0x3FE0000400005666,
    .n4 = 0xBFD5555C88892F64,
};
ZORP_SAME_BLOCK(ErfDoubleBlock, __zorp_derf_native_data, __zorp_derf_data);

// sqrt(erf(x) / x) in x^2 up to the limit
const ErfFloatBlock __zorp_serf_data = {
    .limit = 0x41558C5A,  // 13.3467655
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
    .p5 = 0xB78F18F8,
    .p4 = 0x39F00702,
    .p3 = 0xBBAF8D5D,
    .p2 = 0x3D175FFF,
    .p1 = 0xBE34718D,
    .p0 = 0x3F87F527,
};

// erf(x) / x in x^2 on [0, 2.625]
const ErfHalfBlock __zorp_herf_data = {
    .absmask = 0x7FFF,
    .clamp = 0x4140,  // 2.625
    .n2 = 0x279B,
    .n1 = 0x3101,
    .n0 = 0x3C83,
    .d3 = 0x1BBC,
    .d2 = 0x2D68,
    .d1 = 0x378C,
    .d0 = 0x3C00,
};
ZORP_SAME_BLOCK(ErfHalfBlock, __zorp_herf_native_data, __zorp_herf_data);

// The polynomials of erfc: (erfc(z) - erfc(z + r)) / (r erf'(z)) - 1 in u = z r and w = r^2.

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
    // |r| <= 1/256
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
    // |r| <= 1/128
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
    // |r| <= 1/128
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
    // |r| <= 1/64
    .g1 = 0xBEAB6147,
    .g2 = 0x3F2B4F03,
    .g3 = 0xBF7FFF8B,
};

}  // extern "C"
}  // namespace zorp
