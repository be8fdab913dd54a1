// Runs of points, looked at two at a time: tested, searched, taken apart into two axes and joined again. The pairs are
// the vector extensions of GCC and Clang, which every machine has in some way; what is computed is the same to the bit
// as point by point.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace pointrun {

typedef double Pair __attribute__((vector_size(16)));
typedef long long Mask __attribute__((vector_size(16)));  // of each half all bits or none

inline constexpr std::size_t kValueBytes = sizeof(double);
inline constexpr std::size_t kPointBytes = 2 * kValueBytes;  // x, y

template <class Place>
inline Pair pairAt(const Place* at) {
  Pair pair;
  std::memcpy(&pair, at, sizeof pair);
  return pair;
}
template <class Place>
inline void putPair(Place* at, Pair pair) {
  std::memcpy(at, &pair, sizeof pair);
}
inline Pair both(double value) {
  return Pair{value, value};
}
inline Pair lows(Pair one, Pair other) {
  return __builtin_shufflevector(one, other, 0, 2);
}
inline Pair highs(Pair one, Pair other) {
  return __builtin_shufflevector(one, other, 1, 3);
}
#ifdef __SSE2__
// GCC 12 makes many more instructions of the plain forms.
inline Mask equal(Pair one, Pair other) {
  return reinterpret_cast<Mask>(_mm_cmpeq_pd(one, other));
}
inline bool any(Mask mask) {
  return _mm_movemask_pd(reinterpret_cast<__m128d>(mask)) != 0;
}
#else
inline Mask equal(Pair one, Pair other) {
  return one == other;
}
inline bool any(Mask mask) {
  return (mask[0] | mask[1]) != 0;
}
#endif
// Of 0.0 and -0.0 the second; the second, too, when either is no number.
inline Pair lesser(Pair one, Pair other) {
  return one < other ? one : other;
}
inline Pair greater(Pair one, Pair other) {
  return one > other ? one : other;
}
// No bit is set unless a value is infinite or no number: any other less itself is 0.
inline Mask strangeness(Pair values) {
  return reinterpret_cast<Mask>(values - values);
}

// Written so that a difference in x, which is the rule, is one branch.
inline bool isSame(double x1, double y1, double x2, double y2) {
  return __builtin_expect(x1 == x2, 0) && y1 == y2;
}

inline bool areFinite(const char* at, std::size_t count) {
  Mask strange{};
  for (; count >= 2; count -= 2, at += 2 * kValueBytes) strange |= strangeness(pairAt(at));
  if (count == 1) {
    double last;
    std::memcpy(&last, at, sizeof last);
    strange |= strangeness(both(last));
  }
  return (strange[0] | strange[1]) == 0;
}
inline bool areFinite(const double* values, std::size_t count) {
  return areFinite(reinterpret_cast<const char*>(values), count);
}

// The first point of those from `from` on that equals (px, py); `end` when there is none. `from` is at most `end`.
inline std::size_t findSame(const double* x, const double* y, std::size_t from, std::size_t end, double px, double py) {
  const Pair wanted = both(px);
  while (from < end) {
    while (from + 4 <= end && !any(equal(pairAt(x + from), wanted) | equal(pairAt(x + from + 2), wanted))) from += 4;
    for (const std::size_t stop = std::min(from + 4, end); from < stop; ++from)
      if (isSame(x[from], y[from], px, py)) return from;
  }
  return end;
}

// The first point of those from `from` (not 0) on that equals its predecessor; `end` when there is none.
inline std::size_t findRepeat(const double* x, const double* y, std::size_t from, std::size_t end) {
  for (; end - from >= 2; from += 2) {
    if (!any(equal(pairAt(x + from), pairAt(x + from - 1)) & equal(pairAt(y + from), pairAt(y + from - 1)))) [[likely]]
      continue;
    return isSame(x[from], y[from], x[from - 1], y[from - 1]) ? from : from + 1;
  }
  if (from < end && isSame(x[from], y[from], x[from - 1], y[from - 1])) return from;
  return end;
}

// What spread() saw of the points. It looks at x alone for equal ones: when some may be, look again.
struct Seen {
  bool isFinite;
  bool mayRepeat;
};

// Takes the axes of two points or more apart. Equal points are such as follow each other and, in a ring, those that
// equal the first, but for the last.
template <bool kIsRing>
inline Seen spread(const char* __restrict points, std::size_t count, double* __restrict x, double* __restrict y) {
  const std::size_t paired = (count - 1) / 2 * 2;  // the last point is none of these: it may equal the first
  const Pair start = pairAt(points);
  const Pair first = lows(start, start);
  Mask strange{};
  Mask same{};  // counts downward
  Pair before = both(std::numeric_limits<double>::quiet_NaN());
  for (std::size_t i = 0; i < paired; i += 2) {
    const Pair one = pairAt(points + kPointBytes * i);
    const Pair other = pairAt(points + kPointBytes * (i + 1));
    const Pair xs = lows(one, other);
    putPair(x + i, xs);
    putPair(y + i, highs(one, other));
    strange |= strangeness(one) | strangeness(other);
    same += equal(xs, __builtin_shufflevector(before, xs, 1, 2));
    if constexpr (kIsRing) same += equal(xs, first);
    before = xs;
  }
  long long numSame = -(same[0] + same[1]);
  for (std::size_t i = paired; i < count; ++i) {
    std::memcpy(x + i, points + kPointBytes * i, kValueBytes);
    std::memcpy(y + i, points + kPointBytes * i + kValueBytes, kValueBytes);
    strange |= strangeness(Pair{x[i], y[i]});
    if (i > 0 && x[i] == x[i - 1]) ++numSame;
    if (kIsRing && i + 1 < count && x[i] == x[0]) ++numSame;
  }
  const long long numExpected = kIsRing ? 1 : 0;  // the first point equals itself
  return {(strange[0] | strange[1]) == 0, numSame != numExpected};
}

// The two axes of a run as points.
inline char* join(const double* x, const double* y, std::size_t count, char* to) {
  std::size_t i = 0;
  for (; i + 2 <= count; i += 2, to += 2 * kPointBytes) {
    const Pair xs = pairAt(x + i);
    const Pair ys = pairAt(y + i);
    putPair(to, lows(xs, ys));
    putPair(to + kPointBytes, highs(xs, ys));
  }
  if (i == count) return to;
  putPair(to, Pair{x[i], y[i]});
  return to + kPointBytes;
}

// The same, the last point first.
inline char* joinReversed(const double* x, const double* y, std::size_t count, char* to) {
  std::size_t i = count;
  for (; i >= 2; i -= 2, to += 2 * kPointBytes) {
    const Pair xs = pairAt(x + i - 2);
    const Pair ys = pairAt(y + i - 2);
    putPair(to, highs(xs, ys));
    putPair(to + kPointBytes, lows(xs, ys));
  }
  if (i == 0) return to;
  putPair(to, Pair{x[0], y[0]});
  return to + kPointBytes;
}

}  // namespace pointrun
