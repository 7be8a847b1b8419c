// log gamma for x > 0, the polynomials by range: of float and half up to 8192, of double up to 512,
// where those from 4 on stand in gamma_tables.h. The scalar routines evaluate them in extended
// arithmetic, the kernels in double and in sums of two doubles.
#pragma once

#include "special/extended.h"

namespace zorp {

// ---- Float and half ----------------------------------------------------------------------------

/// x A(x^2) + x^2 B(x^2) + c
template <int n>
struct FloatRange {
  uint64_t a[n], b[n], c;
  long double operator()(long double x) const {
    const long double s = x * x;
    return x * horner(a, s) + s * horner(b, s) + value_of(c);
  }
};
// lgamma(x) = (x - 2) (p[4] x + ... + p[0] x^9 + p[9] x^2 + ... + p[5] x^10 + p[10])
// with p = float_from_2 on [2, 4]: relative error 2^-30.8
inline constexpr FloatRange<5> float_from_2 = {
    {0x3F035F2D1833BF4C, 0x3F7437F2FA1436C6, 0x3FBF7422445C9460, 0x3FE9F107FEE8BD29,
     0x3FFC9D5D5B6CDEFF},
    {0xBEB2CC7A38B9355F, 0xBF421676F9CB46C7, 0xBF9E1C289FB224AB, 0xBFD7A7041DE592FE,
     0xBFF51BAA7FD27785},
    0xBFF01E76D66F8D8A};
// lgamma(x) = p[3] x + ... + p[0] x^7 + p[7] x^2 + ... + p[4] x^8 + p[8] with p = float_from_1_75
// on [1.75, 2]: error 2^-44.5
inline constexpr FloatRange<4> float_from_1_75 = {
    {0xBF8CBC9587EEA5A3, 0xBFDFA67E65E89B29, 0xC00851BC418B8A25, 0xC013284CE7CB0C39},
    {0x3F4A9222032EB39A, 0x3FBBC992783E8C5B, 0x3FF795400783BE49, 0x4012B408F02FAF88},
    0x4000A0CB38D6CF0A};
// lgamma(x) = p[3] x + ... + p[0] x^7 + p[7] x^2 + ... + p[4] x^8 + p[8] with p = float_from_1_5
// on [1.5, 1.75]: error 2^-44.3
inline constexpr FloatRange<4> float_from_1_5 = {
    {0xBFA44EAC9BFA7FDE, 0xBFF084AF95883BA5, 0xC012A5CFE00A2522, 0xC015F83DB73B57B7},
    {0x3F65D5A7EB31047F, 0x3FD0E1583AB00E08, 0x40051FEFE7A663D8, 0x40185982877AE0A2},
    0x4001DB08F9DFA0CC};
// lgamma(x) = p[3] z + ... + p[0] z^7 + p[7] z^2 + ... + p[4] z^8 + p[8]
// with p = float_from_1_25, z = x + float_minimum on [1.25, 1.5]: error 2^-40.5
inline constexpr FloatRange<4> float_from_1_25 = {
    {0xBF831BBBD61313B7, 0xBFA0C90C9C223044, 0xBFC2E427A53EB830, 0x3D890B3DAEBC1DFC},
    {0x3F838E0D35A6171A, 0x3F9285DDDC20D6C3, 0x3FB08B40196425D0, 0x3FDEF72BC8F5287C},
    0xBFBF19B9BCC38A42};
inline constexpr uint64_t float_minimum = 0xBFF762D86356BE3F;  // where gamma is least, negated
// lgamma(x) = p[3] x + ... + p[0] x^7 + p[7] x^2 + ... + p[4] x^8 + p[8] with p = float_from_1
// on [1, 1.25]: error 2^-37.5
inline constexpr FloatRange<4> float_from_1 = {
    {0xBFE22092FC0EE4DC, 0xC01B63D2FD8B4838, 0xC02C6004CA309876, 0xC01F4732F1F3E423},
    {0x3FAC8CDFBC14D340, 0x40048D48C3A02F10, 0x4027CB007D9BF558, 0x40288FCC5B1371AE},
    0x4004F39421765550};

/// log gamma(2^(i + 2) (1 + t)) for t in [0, 1), a polynomial of degree 10.
struct FloatBinade {
  uint64_t c[8], d[3];
  long double operator()(long double t) const {
    const long double s = t * t;
    const uint64_t odd[] = {c[1], c[5], d[1], c[7], c[3]};
    const uint64_t even[] = {c[0], c[4], d[0], c[6], c[2], d[2]};
    return horner(even, s) + t * horner(odd, s);
  }
};
// lgamma(2^(i + 2) (1 + t)) = p[10 + j] + p[3 + j] t + p[2 + j] t^2 + p[7 + j] t^3 + p[6 + j] t^4
// + p[9 + j] t^5 + p[8 + j] t^6 + p[5 + j] t^7 + p[4 + j] t^8 + p[1 + j] t^9 + p[j] t^10
// with p = float_binades, j = 11 i on [0, 1], i = 0..10: relative error 2^-32.0
inline constexpr FloatBinade float_binades[11] = {
    {{0x3F6BBBD68451C0CD, 0xBF966EC3272A16F7, 0x40022A24A39AD769, 0x4014190EDF49C8C5,
      0x3FB130FD016EE241, 0xBFC151B46E635248, 0x3FDE8F611965B5FE, 0xBFEB5110EB265E3D},
     {0x3FCB8CC69000EB5C, 0xBFD41997A0C2C641, 0x3FFCAB0BFA0EA462}},
    {{0x3F736EF93508626A, 0xBF9FE5DBADF58AF1, 0x40110A9FC5192058, 0x40302008A6F96B29,
      0x3FB8E74E0CE1E4B5, 0xBFC9B5DA78873656, 0x3FE99D0DF10022DC, 0xBFF829C0388F9484},
     {0x3FD51EE4DE0A364C, 0xBFE00D7F98A16E4B, 0x40210CE1F327E9E4}},
    {{0x3F7FFF9D6D7E9269, 0xBFAA780A249AEDB1, 0x402082A807AEA080, 0x4045ED9868408013,
      0x3FC4E1E54C2F99B7, 0xBFD5DE2D6FFF1490, 0x3FF75FC89584AE87, 0xC006B4BADD886CAE},
     {0x3FE24F606742D252, 0xBFEC81D7D12574EC, 0x403BE636A63A9C27}},
    {{0x3F8CE54375841A5F, 0xBFB801ABCFFA1BE2, 0x403040A8B1815BDA, 0x405B99A917D24B7A,
      0x3FD30CAB81BFFA03, 0xBFE41AEF61ECF48B, 0x400650CC136BEC43, 0xC016022046E8292B},
     {0x3FF1029A9DD542B4, 0xBFFAD37C209D3B25, 0x405385E6FD9BE7EA}},
    {{0x3F9B69BD22CAA8B8, 0xBFC6D48875B7A213, 0x40402028CCAA2F6D, 0x40709AACEB3CBE0F,
      0x3FE22C6A5924761E, 0xBFF342F5F224523D, 0x4015CD405CCA331F, 0xC025AAD10482C769},
     {0x400062D97D26B523, 0xC00A03E1529FF023, 0x4069204C51E566CE}},
    {{0x3FAAAD9CD0E40D06, 0xBFD63FC8505D80CB, 0x40501008D56C2648, 0x408364794B0F4376,
      0x3FF1BE0126E00284, 0xC002D8E3F6F7F7CA, 0x40258C757E95D860, 0xC0357FA8FD398011},
     {0x40101476B38FD501, 0xC0199DE7B387C0FC, 0x407EB8DAEC83D759}},
    {{0x3FBA4DAC59D49FEB, 0xBFE5F476D1C43A77, 0x40600800D890C7C6, 0x40962C42AAEC8EF0,
      0x40018680ECF19B89, 0xC012A3EB96FB7BA4, 0x40356C4CDD3B60F9, 0xC0456A34BF18F440},
     {0x401FDB008D65125A, 0xC0296B506E665581, 0x409226D93107EF66}},
    {{0x3FCA1B54F6225A5A, 0xBFF5CD67BA10E048, 0x407003FED94C58C2, 0x40A8F30B4ACBCD22,
      0x40116A135EB66D8C, 0xC022891B1CED527E, 0x40455C4617FDD8BC, 0xC0555F82729E59C4},
     {0x402FB3EAAF3E7B2D, 0xC039521142AD8E0D, 0x40A4EFA4F072792E}},
    {{0x3FD9FFF9095C6EC9, 0xC005B88CB25D76C9, 0x408001FE58FA734D, 0x40BBB953BAABB0F3,
      0x40215B2F9FEB5D87, 0xC0327B539DEA5058, 0x40555444B3E8D64D, 0xC0655A2B26F9FC8A},
     {0x403FA024C66B2563, 0xC0494569F250E691, 0x40B7B747C9235BB8}},
    {{0x3FE9F065A1C3D6B1, 0xC015ACF6FAE8D78D, 0x409000FE383DD2B7, 0x40CE7F5C1E8BCB8B,
      0x40315324E5DB2EBE, 0xC04274194EF70D18, 0x4065504353FF2207, 0xC075577FE1BFE7B6},
     {0x404F9607D6DA512C, 0xC0593F0B2EDDB4BC, 0x40CA7E29C5F16DE2}},
    {{0x3FF9E6FBC6B1C70D, 0xC025A62DAF76F85D, 0x40A0007E2F61EBE8, 0x40E0A2A23FB5F6C3,
      0x40414E9BC0A0141A, 0xC0527030F2B69D43, 0x40754E417717B45B, 0xC085562A447258E5},
     {0x405F90C5F613D98D, 0xC0693BD130E50AAF, 0x40DD4495238B190C}}};

// ---- Double ------------------------------------------------------------------------------------

/// t A(t^2) + t^2 B(t^2), the higher coefficients in double.
struct DoubleRange {
  uint64_t a_high[6];
  Extended a_low[3];
  uint64_t b_high[6];
  Extended b_low[2];
  long double operator()(long double t) const {
    const long double s = t * t;
    return t * horner_from(horner(a_high, s), a_low, s) +
           s * horner_from(horner(b_high, s), b_low, s);
  }
};
// lgamma(2 + t) = p[8] t + ... + p[0] t^17 + p[16] t^2 + ... + p[9] t^16 with p = double_around_2
// on |t| <= 1/4: relative error 2^-65.1
inline constexpr DoubleRange double_around_2 = {
    {0xBEA01D7AFA5D8F52, 0xBEC112CD07CFC31A, 0xBEE3CBEDB4C918AA, 0xBF078DE5618D8C9F,
     0xBF2D3FD4C7F68563, 0xBF538AC5C2BF540D},
    {0xBFF7F2027E10C7B051EC_ext, 0xBFFB89F000D2ABB03401_ext, 0x3FFDD8773039049E70B6_ext},
    {0x3EB1010986E60253, 0x3ED2528A428D30E1, 0x3EF580F6D9D0F72D, 0x3F1A127AD811A53D,
     0x3F40B36AF884AE9A, 0x3F67ADD6EADB5718},
    {0x3FF9A8991563EC243383_ext, 0x3FFDA51A6625307D3230_ext}};
// lgamma(x) = log_at_minimum + p[8] t + ... + p[0] t^17 + p[16] t^2 + ... + p[9] t^16
// with p = double_around_minimum, t = x + double_minimum on [1.25, 1.75]: error 2^-65.0
inline constexpr DoubleRange double_around_minimum = {
    {0xBF12680486396DE6, 0xBF2E098A8A2332A8, 0xBF422633DA3A1496, 0xBF56F9849D3BC6CC,
     0xBF6E2F1A1F804B5D, 0xBF851F9F9516A98F},
    {0xBFFA864D46FA895985C1_ext, 0xBFFC97213C6E35E12043_ext, 0x3FC78A8A42A401D979B7_ext},
    {0x3F23C51FC332CD9D, 0x3F370E61B73B205C, 0x3F4CC70680768857, 0x3F6283126F58D7F4,
     0x3F78FCE02A032428, 0x3F9266E797A1433F},
    {0x3FFB845A14A6A81B0638_ext, 0x3FFDF7B95E4771C55C99_ext}};
inline constexpr Extended double_minimum = 0xBFFFBB16C31AB5F1FC00_ext;  // as float_minimum
inline constexpr Extended log_at_minimum = 0xBFFBF8CDCDE61C520E0F_ext;
// lgamma(1 + t) = p[8] t + ... + p[0] t^17 + p[16] t^2 + ... + p[9] t^16 with p = double_around_1
// on [-1/8, 1/4]: relative error 2^-60.9
inline constexpr DoubleRange double_around_1 = {
    {0xBF9A04F7E40C8498, 0xBFB10C251723B123, 0xBFB3B63609CA0CBD, 0xBFB748A3CFCE4717,
     0xBFBC806766F48C41, 0xBFC2703A1D85497E},
    {0xBFFCD45CE0BD54BE3D67_ext, 0xBFFDCD26AADF559676D0_ext, 0xBFFE93C467E37DB0C7A7_ext},
    {0x3FAB79D8D9380F03, 0x3FB2669DAD69A12D, 0x3FB5564EA1675539, 0x3FB9A01DEE29966A,
     0x3FC010B36CDA773A, 0x3FC5B40CB0FD353C},
    {0x3FFD8A8991563ECBBA5D_ext, 0x3FFED28D3312983E9844_ext}};

// lgamma(x) = (x - 2) quotient_k (x^2 + quotient_a[0] x + quotient_b[0])
// ... (x^2 + quotient_a[10] x + quotient_b[10]) on [2.25, 4]: relative error 2^-61.6
inline constexpr Extended quotient_a[11] = {
    0xC001F888E8D7892718A2_ext, 0x3FFDF62F273BA12A4639_ext, 0xBFFCA93AC50A37EC8D38_ext,
    0xBFFFB4CC43D2C161E057_ext, 0xC000C6AC672F0C1392C7_ext, 0xC001A292B9AE3276942E_ext,
    0xC001E554E4CCCA6C7B7B_ext, 0xC00292F0F55FBC87F860_ext, 0xC002AF60D0112843F6C1_ext,
    0xC002C5956500FA3D92E7_ext, 0xC002D3B22CCBD8587750_ext};
inline constexpr Extended quotient_b[11] = {
    0x4001D888B6CF34159B54_ext, 0x3FFEBCB79C8329FD9F44_ext, 0x4000CB8896FAD69C455D_ext,
    0x4001E510A424639EBF5E_ext, 0x4002C65ED41B097486B3_ext, 0x4003943AF77763601441_ext,
    0x4003C8A93F9ECB06E891_ext, 0x4003FC2E5A4AD33DE19D_ext, 0x40049526B75B38670119_ext,
    0x4004A7675879D68B587E_ext, 0x4004B31DFA672D7FB8C0_ext};
inline constexpr Extended quotient_k = 0xBFD783A27775D86F9A81_ext;

}  // namespace zorp
