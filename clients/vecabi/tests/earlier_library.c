// Stands in for any other library of these names. Its versions are those of earlier_library.map.
#include <immintrin.h>

__m256d _ZGVdN4v_exp(__m256d x) { return x; }
__m256 _ZGVdN8vv_powf(__m256 x, __m256 y) { return x + 0 * y; }
void _ZGVdN4vvv_sincos(__m256d x, __m256i sine, __m256i cosine) {
  (void)x, (void)sine, (void)cosine;
}
