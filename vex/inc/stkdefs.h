// Basic scalar and collection names that every part of the engine shares.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

using STK_Int32 = std::int32_t;
using STK_UInt32 = std::uint32_t;
using STK_Boolean = bool;
inline constexpr bool STK_TRUE = true;
inline constexpr bool STK_FALSE = false;

// An ordered vector; entries() is its count.
template <class T>
class VEXOrderedVector : public std::vector<T> {
 public:
  using std::vector<T>::vector;
  std::size_t entries() const { return this->size(); }
};

// One row of a mapping file, a list of names, the parameters of an open call.
using VEXStringVector = VEXOrderedVector<std::string>;

// Separates the elements of a list that travels inside one string.
inline constexpr char kListSeparator = '\x01';
// First byte of a transfer variable's value that holds a list; also separates the pieces of a pair text.
inline constexpr char kListMark = '\x02';
