// VEXBlockVector: a list that grows by blocks, so that nothing is copied and no more is held than is in it.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

template <class T, std::size_t kShift = 12>  // of 2 to the power of kShift each
class VEXBlockVector {
 public:
  std::size_t size() const { return size_; }
  T& operator[](std::size_t at) { return blocks_[at >> kShift][at & kMask]; }
  const T& operator[](std::size_t at) const { return blocks_[at >> kShift][at & kMask]; }
  T& back() { return (*this)[size_ - 1]; }
  void push_back(const T& value) {
    if (size_ == blocks_.size() << kShift) blocks_.push_back(std::make_unique_for_overwrite<T[]>(kMask + 1));
    (*this)[size_++] = value;
  }
  void pop_back() { --size_; }
  void clear() { size_ = 0; }  // keeps the blocks
  void release() {
    blocks_.clear();
    size_ = 0;
  }

 private:
  static constexpr std::size_t kMask = (std::size_t{1} << kShift) - 1;
  std::vector<std::unique_ptr<T[]>> blocks_;
  std::size_t size_ = 0;
};
