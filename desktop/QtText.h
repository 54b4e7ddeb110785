// Our texts as those of Qt.
#pragma once

#include <QString>
#include <string_view>

namespace tellurix {

inline QString FromUtf8(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace tellurix
