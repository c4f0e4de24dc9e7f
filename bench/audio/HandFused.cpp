#include "HandFused.h"

#ifdef __SSE2__
#include <emmintrin.h>
#else
#include <algorithm>
#endif

namespace orv::bench {

#ifdef __SSE2__

float handFused(const float* samples, std::size_t count, float gain, std::int16_t* pcm) noexcept {
    const __m128 factor = _mm_set1_ps(gain);
    const __m128 high = _mm_set1_ps(1.0F);
    const __m128 low = _mm_set1_ps(-1.0F);
    const __m128 scale = _mm_set1_ps(32767.0F);
    __m128 sums[4] = {_mm_setzero_ps(), _mm_setzero_ps(), _mm_setzero_ps(), _mm_setzero_ps()};
    std::size_t i = 0;
    for (; i + 16 <= count; i += 16) {
        __m128i whole[4];
        for (std::size_t lane = 0; lane < 4; ++lane) {
            const __m128 gained = _mm_mul_ps(_mm_loadu_ps(samples + i + 4 * lane), factor);
            sums[lane] = _mm_add_ps(sums[lane], _mm_mul_ps(gained, gained));
            const __m128 clamped = _mm_max_ps(_mm_min_ps(gained, high), low);
            whole[lane] = _mm_cvttps_epi32(_mm_mul_ps(clamped, scale));
        }
        auto* const target = reinterpret_cast<__m128i*>(pcm + i);
        _mm_storeu_si128(target, _mm_packs_epi32(whole[0], whole[1]));
        _mm_storeu_si128(target + 1, _mm_packs_epi32(whole[2], whole[3]));
    }
    alignas(16) float parts[4];
    _mm_store_ps(parts, _mm_add_ps(_mm_add_ps(sums[0], sums[1]), _mm_add_ps(sums[2], sums[3])));
    float total = parts[0] + parts[1] + parts[2] + parts[3];
    for (; i < count; ++i) {
        const float gained = samples[i] * gain;
        total += gained * gained;
        const float clamped = gained < 1.0F ? (gained > -1.0F ? gained : -1.0F) : 1.0F;
        pcm[i] = static_cast<std::int16_t>(clamped * 32767.0F);
    }
    return total;
}

#else

float handFused(const float* samples, std::size_t count, float gain, std::int16_t* pcm) noexcept {
    float total = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const float gained = samples[i] * gain;
        total += gained * gained;
        pcm[i] = static_cast<std::int16_t>(std::clamp(gained, -1.0F, 1.0F) * 32767.0F);
    }
    return total;
}

#endif

} // namespace orv::bench
