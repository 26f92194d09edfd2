#include "host/objects/sha256.h"

#include <algorithm>
#include <bit>

#if defined(__i386__) || defined(__x86_64__)
#define HAS_X86 1
#include <cpuid.h>
#include <immintrin.h>
#endif

namespace host {
namespace {

constexpr std::size_t kBlock = 64;
constexpr std::size_t kRounds = 64;
using State = std::array<std::uint32_t, 8>;

alignas(16) constexpr std::uint32_t kConstants[kRounds] = {
    0x428A2F98, 0x71374491, 0xB5C0FBCF, 0xE9B5DBA5, 0x3956C25B, 0x59F111F1,
    0x923F82A4, 0xAB1C5ED5, 0xD807AA98, 0x12835B01, 0x243185BE, 0x550C7DC3,
    0x72BE5D74, 0x80DEB1FE, 0x9BDC06A7, 0xC19BF174, 0xE49B69C1, 0xEFBE4786,
    0x0FC19DC6, 0x240CA1CC, 0x2DE92C6F, 0x4A7484AA, 0x5CB0A9DC, 0x76F988DA,
    0x983E5152, 0xA831C66D, 0xB00327C8, 0xBF597FC7, 0xC6E00BF3, 0xD5A79147,
    0x06CA6351, 0x14292967, 0x27B70A85, 0x2E1B2138, 0x4D2C6DFC, 0x53380D13,
    0x650A7354, 0x766A0ABB, 0x81C2C92E, 0x92722C85, 0xA2BFE8A1, 0xA81A664B,
    0xC24B8B70, 0xC76C51A3, 0xD192E819, 0xD6990624, 0xF40E3585, 0x106AA070,
    0x19A4C116, 0x1E376C08, 0x2748774C, 0x34B0BCB5, 0x391C0CB3, 0x4ED8AA4A,
    0x5B9CCA4F, 0x682E6FF3, 0x748F82EE, 0x78A5636F, 0x84C87814, 0x8CC70208,
    0x90BEFFFA, 0xA4506CEB, 0xBEF9A3F7, 0xC67178F2};

void TakeBlocks(State& state, const std::uint8_t* bytes, std::size_t blocks) {
  for (; blocks > 0; --blocks, bytes += kBlock) {
    std::uint32_t words[kRounds];
    for (std::size_t i = 0; i < 16; ++i) {
      const std::uint8_t* at = bytes + 4 * i;
      words[i] = std::uint32_t{at[0]} << 24 | std::uint32_t{at[1]} << 16 |
                 std::uint32_t{at[2]} << 8 | at[3];
    }
    for (std::size_t i = 16; i < kRounds; ++i) {
      const std::uint32_t x = words[i - 15];
      const std::uint32_t y = words[i - 2];
      words[i] = words[i - 16] + words[i - 7] +
                 (std::rotr(x, 7) ^ std::rotr(x, 18) ^ x >> 3) +
                 (std::rotr(y, 17) ^ std::rotr(y, 19) ^ y >> 10);
    }
    auto [a, b, c, d, e, f, g, h] = state;
    for (std::size_t i = 0; i < kRounds; ++i) {
      const std::uint32_t first =
          h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
          ((e & f) ^ (~e & g)) + kConstants[i] + words[i];
      const std::uint32_t second =
          (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) +
          ((a & b) ^ (a & c) ^ (b & c));
      h = g, g = f, f = e, e = d + first;
      d = c, c = b, b = a, a = first + second;
    }
    const State turned{a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < turned.size(); ++i) state[i] += turned[i];
  }
}

#ifdef HAS_X86
bool HasShaInstructions() {
  unsigned a = 0;
  unsigned b = 0;
  unsigned c = 0;
  unsigned d = 0;
  if (__get_cpuid(1, &a, &b, &c, &d) == 0 || (c & bit_SSE4_1) == 0) {
    return false;
  }
  return __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & bit_SHA) != 0;
}

// The four message words that take the place of the oldest, `i` & 3.
__attribute__((target("sha,sse4.1"))) __m128i NextWords(
    const __m128i (&words)[4], int i) {
  const __m128i last = words[(i + 3) & 3];
  const __m128i first = _mm_sha256msg1_epu32(words[i & 3], words[(i + 1) & 3]);
  const __m128i seventh = _mm_alignr_epi8(last, words[(i + 2) & 3], 4);
  return _mm_sha256msg2_epu32(_mm_add_epi32(first, seventh), last);
}

// The instructions want the state as two words of four: A B E F, C D G H.
__attribute__((target("sha,sse4.1"))) void TakeBlocksByInstructions(
    State& state, const std::uint8_t* bytes, std::size_t blocks) {
  const auto* const constants = reinterpret_cast<const __m128i*>(kConstants);
  const __m128i big_endian =
      _mm_set_epi64x(0x0C0D0E0F08090A0B, 0x0405060700010203);
  auto* const low = reinterpret_cast<__m128i*>(state.data());
  const __m128i dcba = _mm_loadu_si128(low);
  const __m128i hgfe = _mm_loadu_si128(low + 1);
  const __m128i cdab = _mm_shuffle_epi32(dcba, 0xB1);
  const __m128i efgh = _mm_shuffle_epi32(hgfe, 0x1B);
  __m128i abef = _mm_alignr_epi8(cdab, efgh, 8);
  __m128i cdgh = _mm_blend_epi16(efgh, cdab, 0xF0);
  for (; blocks > 0; --blocks, bytes += kBlock) {
    const __m128i abef_before = abef;
    const __m128i cdgh_before = cdgh;
    __m128i words[4];
    for (int i = 0; i < 16; ++i) {
      __m128i& word = words[i & 3];
      if (i < 4) {
        const auto* at = reinterpret_cast<const __m128i*>(bytes) + i;
        word = _mm_shuffle_epi8(_mm_loadu_si128(at), big_endian);
      } else {
        word = NextWords(words, i);
      }
      __m128i sum = _mm_add_epi32(word, constants[i]);
      cdgh = _mm_sha256rnds2_epu32(cdgh, abef, sum);
      sum = _mm_shuffle_epi32(sum, 0x0E);
      abef = _mm_sha256rnds2_epu32(abef, cdgh, sum);
    }
    abef = _mm_add_epi32(abef, abef_before);
    cdgh = _mm_add_epi32(cdgh, cdgh_before);
  }
  const __m128i feba = _mm_shuffle_epi32(abef, 0x1B);
  const __m128i dchg = _mm_shuffle_epi32(cdgh, 0xB1);
  _mm_storeu_si128(low, _mm_blend_epi16(feba, dchg, 0xF0));
  _mm_storeu_si128(low + 1, _mm_alignr_epi8(dchg, feba, 8));
}
#endif

void Take(State& state, const std::uint8_t* bytes, std::size_t blocks) {
#ifdef HAS_X86
  static const bool has_instructions = HasShaInstructions();
  if (has_instructions) return TakeBlocksByInstructions(state, bytes, blocks);
#endif
  TakeBlocks(state, bytes, blocks);
}

}  // namespace

void Sha256::Add(std::span<const std::uint8_t> bytes) {
  const std::size_t kept = count_ % kBlockBytes;
  count_ += bytes.size();
  if (kept > 0) {
    const std::size_t taken = std::min(kBlockBytes - kept, bytes.size());
    std::copy_n(bytes.begin(), taken, block_.begin() + kept);
    if (kept + taken < kBlockBytes) return;
    Take(state_, block_.data(), 1);
    bytes = bytes.subspan(taken);
  }
  const std::size_t whole = bytes.size() / kBlockBytes;
  Take(state_, bytes.data(), whole);
  const auto rest = bytes.subspan(whole * kBlockBytes);
  std::copy(rest.begin(), rest.end(), block_.begin());
}

std::string Sha256::Finish() {
  const std::uint64_t bits = count_ * 8;
  constexpr std::array<std::uint8_t, kBlockBytes> kPadding{0x80};
  constexpr std::size_t kLengthAt = kBlockBytes - 8;
  const std::size_t kept = count_ % kBlockBytes;
  Add(std::span(kPadding).first(
      (kept < kLengthAt ? kLengthAt : kBlockBytes + kLengthAt) - kept));
  std::array<std::uint8_t, 8> length;
  for (std::size_t i = 0; i < length.size(); ++i) {
    length[i] = static_cast<std::uint8_t>(bits >> (56 - 8 * i));
  }
  Add(length);
  std::string digits;
  for (const std::uint32_t word : state_) {
    for (int shift = 28; shift >= 0; shift -= 4) {
      digits += "0123456789abcdef"[word >> shift & 15];
    }
  }
  return digits;
}

}  // namespace host
