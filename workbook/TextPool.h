// Texts kept once: equal texts of a workbook share one copy, so a column of a million cells with few categories costs
// its pointers alone, and two texts are equal when their pointers are. Not for use by several threads at once.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace tellurix {

// A counted pointer into a pool; the pool must outlive it.
class TextRef {
 public:
  using Node = std::pair<const std::string, std::uint32_t>;  // the text and the number of pointers to it

  TextRef() = default;
  explicit TextRef(Node& node) : node_(&node) { ++node.second; }
  TextRef(const TextRef& other) : node_(other.node_) {
    if (node_) ++node_->second;
  }
  TextRef(TextRef&& other) noexcept : node_(std::exchange(other.node_, nullptr)) {}
  TextRef& operator=(TextRef other) noexcept {
    std::swap(node_, other.node_);
    return *this;
  }
  ~TextRef() {
    if (node_) --node_->second;
  }

  std::string_view View() const { return node_ ? std::string_view(node_->first) : std::string_view(); }
  bool operator==(const TextRef&) const = default;

 private:
  Node* node_ = nullptr;
};

class TextPool {
 public:
  TextRef Intern(std::string_view text) {
    const auto found = texts_.find(text);
    if (found != texts_.end()) return TextRef(*found);
    if (texts_.size() >= sweepAt_) Sweep();
    return TextRef(*texts_.emplace(std::string(text), 0).first);
  }

  std::size_t Size() const { return texts_.size(); }

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };

  // Texts that nobody points to any more go when the pool has doubled since the last time.
  void Sweep() {
    std::erase_if(texts_, [](const TextRef::Node& node) { return node.second == 0; });
    sweepAt_ = std::max<std::size_t>(4096, 2 * texts_.size());
  }

  std::unordered_map<std::string, std::uint32_t, Hash, std::equal_to<>> texts_;
  std::size_t sweepAt_ = 4096;
};

}  // namespace tellurix
