// tgamma, a lane at a time: double in extended arithmetic, float and half in double, rounded once.
//
// Factors of the recurrence gamma(a) = (a - 1) gamma(a - 1) bring a to the start of a block of
// arguments, where a polynomial gives gamma of the fraction; below 2 a polynomial serves
// gamma(a) or gamma(a + 1) itself. Negative arguments come by the reflection
// |gamma(-a)| = 1 / (S gamma(1 + a)) with S = sin(pi z) / pi, z the distance to the next integer.
#include "special/arithmetic.h"
#include "special/gamma.h"
#include "special/gamma_tables.h"

namespace zorp {
namespace {

// ---- Double -------------------------------------------------------------------------------------

// gamma(1 + z) = _tgamma_A100_table[0] + ... + _tgamma_A100_table[15] z^15
// on [0, 1/4]: relative error 2^-64.5
constexpr Extended _tgamma_A100_table[16] = {
    0x3FFF8000000000000000_ext, 0xBFFE93C467E37DB0C536_ext, 0x3FFEFD32C611D8A881D0_ext,
    0xBFFEE8508C7990A0DAC0_ext, 0x3FFEFB52882A095B18A4_ext, 0xBFFEFB64074CED2658FB_ext,
    0x3FFEFE3F02E5EDB6811E_ext, 0xBFFEFEF9CAEE2CB5B533_ext, 0x3FFEFF8153BD42E71A4F_ext,
    0xBFFEFFA5EF3959089E94_ext, 0x3FFEFF173B7E66FD1D61_ext, 0xBFFEFB73D31793068463_ext,
    0x3FFEECF7DDDFD27C9223_ext, 0xBFFEC4DED71C782F76C8_ext, 0x3FFDF5B5413F95E1C282_ext,
    0xBFFCA405530B067ECD3C_ext};
// gamma(x) = _tgamma_A125_table[0] + ... + _tgamma_A125_table[15] z^15
// with z = x - double_minimum on [1.25, 1.5]: relative error 2^-65.7
constexpr Extended _tgamma_A125_table[16] = {
    0x3FFEE2B6E4153A57746C_ext, 0x3FC6F4F8FBC7C0C9D317_ext, 0x3FFDDB629FB9BBDC1C4E_ext,
    0xBFFC85D74FA063E81476_ext, 0x3FFCA4C08BAF0A559479_ext, 0xBFFBBCFBBD5786537E9A_ext,
    0x3FFB8F4BDE8883232364_ext, 0xBFFAC038E6E3261568F9_ext, 0x3FFA85A262C6F8FEEF71_ext,
    0xBFF9B6F91CB5C371177B_ext, 0x3FF8FB14010FB3697785_ext, 0xBFF8AC8FD5E11F6EEAD8_ext,
    0x3FF7E366DB2FB27B7ECD_ext, 0xBFF7C53F83645D4597FC_ext, 0x3FF3EA6DE925E6EB8C8F_ext,
    0xBFF7D038092400619677_ext};
// gamma(1 + z) = _tgamma_A150_table[0] + ... + _tgamma_A150_table[15] z^15
// on [1/2, 1]: relative error 2^-60.4
constexpr Extended _tgamma_A150_table[16] = {
    0x3FFEFFFFF1781FDBEE84_ext, 0xBFFE93C30FD9781DBA88_ext, 0x3FFEFD23CD9741B460B8_ext,
    0xBFFEE7E82D0C613A8DE4_ext, 0x3FFEF9535027C1B1F795_ext, 0xBFFEF41312A8572ED346_ext,
    0x3FFEE96254A2407A5EAC_ext, 0xBFFECF579312AD7EAD72_ext, 0x3FFEA6605F2721F787CE_ext,
    0xBFFDE7F236EBFB9F774E_ext, 0x3FFD87445235F4688CC5_ext, 0xBFFBFD84F35B70CD9AE2_ext,
    0x3FFAB5D5E9E5104FA995_ext, 0xBFF8BA55A9A1FC883523_ext, 0x3FF5F1F75D3C561CBBAF_ext,
    0xBFF29533F9D3723B448C_ext};
constexpr Extended double_minimum = 0x3FFFBB16C31AB5F1FC00_ext;  // where gamma is least
constexpr Extended double_scale = 0x3BECBA5D5869211696FF_ext;    // of the last row of factors

// sin(pi z) / pi = z + double_sine_1 z^3 + double_sine[8] z^5 + ... + double_sine[0] z^21
// on [0, 1/2]: relative error 2^-59.4
constexpr Extended double_sine_1 = 0xBFFFD28D3312983E9918_ext;
constexpr Extended double_sine[] = {
    0x3FDEBCBC4342112F52A2_ext, 0xBFE3FAFCECB86536F655_ext, 0x3FE987E4C97F9CF09B92_ext,
    0xBFEDEA124C68E704C5CB_ext, 0x3FF29BA38CFD59C8AA1D_ext, 0xBFF699C0B552303D5B21_ext,
    0x3FF9D63402E79A853175_ext, 0xBFFCC354723906DB36BA_ext, 0x3FFECFCE5A015E236291_ext};

constexpr FactorTable<12> blocks = _tgamma_A_table;

struct OfDouble {
  using Element = double;
  using Work = long double;
  static constexpr int block = 16;
  static constexpr double overflow = 0x1.573fae561f648p7;  // 171.62437695630274
  static constexpr double scaled_below = -176, underflow = -185, shifter = 0x1p52;
  static constexpr uint64_t tiny = 0x0004000000000000;  // 1/x overflows up to here
  static constexpr double large = 0x1p1000, small = 0x1p-1000;

  static long double scale() { return double_scale; }
  static long double row(int k, long double z) { return blocks.of[k](z); }
  static long double from_1_to_2(long double t, double x) {
    if (magnitude_bits(x) < Format<double>::implicit_bit) return 1;
    if (t < 1.25L) return power_series(_tgamma_A100_table, t - 1);
    if (t < 1.5L) return power_series(_tgamma_A125_table, t - double_minimum);
    return power_series(_tgamma_A150_table, t - 1);
  }
  static long double sine(long double z) {
    const long double v = z * z;
    return z + z * v * (double_sine_1 + v * horner(double_sine, v));
  }

 private:
  static long double power_series(const Extended (&c)[16], long double z) {
    long double v = c[15];
    for (int k = 14; k >= 0; --k) v = v * z + c[k];
    return v;
  }
};

// ---- Float and half -----------------------------------------------------------------------------

struct FloatRow {
  uint64_t a[6], b[6], k;
};
// gamma(2 + z) = p[12] (z^2 + p[0] z + p[6]) ... (z^2 + p[5] z + p[11]) with p = float_rows
// on [0, 1]: relative error 2^-43.7
// gamma(8 i + z) = p[j + 12] (z^2 + p[j + 0] z + p[j + 6]) ... (z^2 + p[j + 5] z + p[j + 11])
// with p = float_rows, j = 13 i on [0, 1], i = 1..4: relative error 2^-34.0
// float_scale gamma(40 + z) = p[j + 12] (z^2 + p[j + 0] z + p[j + 6])
// ... (z^2 + p[j + 5] z + p[j + 11]) with p = float_rows, j = 65
// on [0, 1]: relative error 2^-32.9
constexpr FloatRow float_rows[6] = {{{0x4009EFD1BA0CB3B4, 0x3FFFB35378FF4822, 0x3FD9CE68F695B198,
                                      0xBFF8C30AC900DA03, 0xC01032270413B896, 0xC01F171A4C0D6827},
                                     {0x400E17D2F0535C02, 0x4010689240F7FAC8, 0x40148F8E197396AC,
                                      0x401C601959F1249C, 0x402563147DDCCF8D, 0x4033406D0480A21C},
                                     0x3EE21AD881741977},
                                    {{0x4006222BAE0B793B, 0x4002452733473EDA, 0x3FF545828F7B73C5,
                                      0xBFBBD210578764DF, 0xC0010EF3326FDDB3, 0xC01492B817F99C0F},
                                     {0x4000542098F53CFC, 0x40032C1309AD6C81, 0x40099C905A249B75,
                                      0x4012B972AE0E533D, 0x401D7331E19BD2E1, 0x402A06807295EF57},
                                     0x3FE6F6DB91D0D4CC},
                                    {{0x4000131002867596, 0x3FFAA362D5D1B6F2, 0x3FEEB1F345BC2769,
                                      0xBFC3BBE6E7F3316F, 0xBFFCB6985697DB6D, 0xC0115BEE3BFC3B3B},
                                     {0x3FF14E07DA5E9983, 0x3FF53B76BF81E2C0, 0x3FFE62FF83456F73,
                                      0x4007E33478A114C4, 0x4014051E0269A3DC, 0x40229D4227468EDB},
                                     0x41E9B2B73795ED57},
                                    {{0x3FFAF7BD498384DE, 0x3FF62AD8B4D1C3D2, 0x3FE8943CBBB4B727,
                                      0xBFCB39D466E11756, 0xBFFABCADCD004C32, 0xC00FADE97C097EC9},
                                     {0x3FE879AF3243D8C1, 0x3FEEC7DEBB14CE1E, 0x3FF6DA9ED737707E,
                                      0x4002A29E9E0C782C, 0x401017B79BA80BCB, 0x401E941DC3C4DE80},
                                     0x44329D5B5167C6C3},
                                    {{0x3FF7ECB3A0E8FE5C, 0x3FF3815A8516316B, 0x3FE4CE76DA1B5783,
                                      0xBFD0524DB460BC4E, 0xBFF9ABD8FCC000C3, 0xC00DD89969A4195B},
                                     {0x3FE35852DF14E200, 0x3FE8C7610359F642, 0x3FF2E43139CBF563,
                                      0x3FFF96DC3474A606, 0x400BCF750EC16173, 0x401AC14E02EA701C},
                                     0x46AFF4CA9B0DDDF0},
                                    {{0x3FF5DCE4D8193097, 0x3FF1B0D8C4974FFA, 0x3FE231DEB11D847A,
                                      0xBFD251ECAFD7E935, 0xBFF8FB450194CAEA, 0xC00C9658E030A6C4},
                                     {0x3FE0368AE288F6BF, 0x3FE513AE4215A70C, 0x3FF068851118AB46,
                                      0x3FFBF7C7BB46BF7D, 0x4008F960F7141B8B, 0x40183BA08134397B},
                                     0x3FF0000000000000}};

constexpr double float_scale = from_bits(uint64_t{0x368954EAEDBCC440});

// gamma(1 + z) = float_A100_table[0] + ... + float_A100_table[7] z^7
// on [0, 1/4]: relative error 2^-32.3
constexpr uint64_t float_A100_table[8] = {
    0x3FEFFFFFFFE9209E, 0xBFE2788CCD545AA4, 0x3FEFA648D144911C, 0xBFED0800D93449B8,
    0x3FEF4857A010CA3B, 0xBFEE3720F7720B4D, 0x3FE96FFEEEA8520F, 0xBFD9909648921868};
// gamma(x) = float_A125_table[0] + ... + float_A125_table[7] z^7
// with z = x - 1.4616321449683625 on [1.25, 1.5]: relative error 2^-34.9
constexpr uint64_t float_A125_table[8] = {
    0x3FEC56DC82A39AA2, 0xBDEE86A39D8452EB, 0x3FDB6C5465BBEF1F, 0xBFC0BADE710A10B9,
    0x3FC496A01A545163, 0xBFB7E7F83A546EBE, 0x3FAF237514F36691, 0xBFB421236426936C};
// gamma(1 + z) = float_A150_table[0] + ... + float_A150_table[7] z^7
// on [1/2, 3/4]: relative error 2^-37.1
constexpr uint64_t float_A150_table[8] = {
    0x3FEFFC613AE7FBC8, 0xBFE245971DF735B8, 0x3FEE65557AB26771, 0xBFE85B427DBD23E4,
    0x3FE3C90CC8F09147, 0xBFD59D31BE3AB42A, 0x3FBF4203E3816C7B, 0xBF94730B51795867};
// gamma(1 + z) = float_A175_table[0] + ... + float_A175_table[7] z^7
// on [3/4, 1]: relative error 2^-38.9
constexpr uint64_t float_A175_table[8] = {
    0x3FEFEE1E644B2022, 0xBFE1C1AEDFB25495, 0x3FEC56A80A977CA5, 0xBFE3C24AC40AC0BB,
    0x3FDB262D949175BE, 0xBFC6F0E707560916, 0x3FA96E37D09735F3, 0xBF7746A85137617E};

/// Of float, and with fused operations of half.
template <class Arithmetic>
struct OfFloat {
  using Element = float;
  using Work = double;
  static constexpr int block = 8;
  static constexpr float overflow = 0x1.18522p5f;  // 35.0401
  static constexpr float scaled_below = -40, underflow = -43, shifter = 0x1p23f;
  static constexpr uint32_t tiny = 0x00200000;
  static constexpr float large = 0x1p100f, small = 0x1p-100f;

  static double scale() { return float_scale; }
  static double row(int k, double z) {
    const FloatRow& row = float_rows[k];
    const double s = z * z;
    double v = from_bits(row.k);
    for (int i = 0; i < 6; ++i) v = v * (mul_add(from_bits(row.a[i]), z, s) + from_bits(row.b[i]));
    return v;
  }
  static double from_1_to_2(double t, float) {
    if (t < 1.25) return power_series(float_A100_table, t - 1);
    if (t < 1.5) return power_series(float_A125_table, t - 1.4616321449683625);
    return power_series(t < 1.75 ? float_A150_table : float_A175_table, t - 1);
  }
  static double sine(double z) {
    const double v = z * z;
    // sin(pi z) / pi - z, its zeros in pairs.
    const double first = mul_add(from_bits(uint64_t{0x3E90FC992FF39E13}), v,
                                 from_bits(uint64_t{0xBEC144B2760626E2}));
    constexpr uint64_t pairs[3][2] = {{0xC026FB0D377656CC, 0x405541D7ABECEFCA},
                                      {0x3FFFB15F95A22324, 0x406CE58F4A41C6E7},
                                      {0xC023D59A47DBFCD3, 0x404453786302C61E}};
    double product = z * v * first;
    double factor = 0;
    for (int i = 0; i < 3; ++i) {
      if (i > 0) product = product * factor;
      factor = mul_add(v + from_bits(pairs[i][0]), v, from_bits(pairs[i][1]));
    }
    return mul_add(product, factor, z);
  }

 private:
  static constexpr auto mul_add = Arithmetic::multiply_add;
  static double power_series(const uint64_t (&c)[8], double z) {
    double v = from_bits(c[7]);
    for (int k = 6; k >= 0; --k) v = mul_add(v, z, from_bits(c[k]));
    return v;
  }
};

// ---- The algorithm ------------------------------------------------------------------------------

template <class T>
constexpr T positive_nan = from_bits(Pattern<T>(Format<T>::infinity | Format<T>::quiet_bit));

/// Gamma of an argument of magnitude 2 or more, as |gamma| for negative ones.
template <class Of>
typename Of::Work from_2(typename Of::Element x, typename Of::Work sine) {
  using T = typename Of::Element;
  using Work = typename Of::Work;
  const T a = x < 0 ? -x : x;
  const int n = static_cast<int>(a);
  const int k = n / Of::block, factors = n % Of::block - (k == 0 ? 2 : 0);
  const Work value = Of::row(k, a - static_cast<T>(n));
  Work product = 1;
  for (int i = 1; i <= factors; ++i) product = product * static_cast<Work>(a - static_cast<T>(i));
  if (x > 0) return value * product;
  const Work r = 1 / (sine * a * value * product);
  return x < Of::scaled_below ? r * Of::scale() : r;
}

/// Gamma of an argument of magnitude below 2, as |gamma| for negative ones.
template <class Of>
typename Of::Work below_2(typename Of::Element x, typename Of::Work sine) {
  using Work = typename Of::Work;
  const Work a = x < 0 ? -x : x;
  const Work p = Of::from_1_to_2(a < 1 ? a + 1 : a, x);
  if (x > 0) return a < 1 ? p / a : p;
  return a < 1 ? 1 / (sine * p) : 1 / (sine * a * p);
}

template <class Of>
[[gnu::noinline]] typename Of::Element gamma(typename Of::Element x) {
  using T = typename Of::Element;
  using Work = typename Of::Work;
  const T sign = sign_bits(x) != 0 ? -1 : 1;
  if (is_nan(x) || magnitude_bits(x) == Format<T>::infinity) return x < 0 ? positive_nan<T> : x + x;
  if (magnitude_bits(x) <= Of::tiny)
    return x == 0 ? sign * static_cast<T>(infinity) : sign * Of::large * Of::large;
  if (x >= Of::overflow) return static_cast<T>(infinity);
  const T a = x < 0 ? -x : x;
  Work sine = 0;
  bool odd = false;  // floor(a)
  if (x < 0) {
    if (a >= Of::shifter || static_cast<T>(static_cast<int64_t>(a)) == a) return positive_nan<T>;
    odd = static_cast<int64_t>(a) & 1;
    if (x < Of::underflow) return (odd ? Of::small : -Of::small) * Of::small;
    const T z = a - ((a + Of::shifter) - Of::shifter);
    sine = Of::sine(z < 0 ? -z : z);
  }
  const Work r = a >= 2 ? from_2<Of>(x, sine) : below_2<Of>(x, sine);
  return static_cast<T>(x < 0 && !odd ? -r : r);
}

}  // namespace

extern "C" {

void __zorp_dtgamma_cout_rare(const double* x, double* result) {
  const X87Settings<true> settings;
  *result = gamma<OfDouble>(*x);
}
void __zorp_stgamma_cout_rare(const float* x, float* result) {
  *result = gamma<OfFloat<Separate>>(*x);
}
void __zorp_htgamma_cout_rare(const half* x, half* result) {
  *result = narrowed(gamma<OfFloat<Fused>>(widened(*x)));
}

}  // extern "C"
}  // namespace zorp
