// An open report: its text, and the help topic of the analysis that wrote last.
#pragma once

#include <functional>
#include <string_view>

#include "host/Documents.h"
#include "report/RichText.h"

namespace tellurix {

class Report {
 public:
  RichText text;
  int helpContext = 0;
  DocumentState document;
  std::function<void()> onAppended;                  // a view brings the newest result on screen
  std::function<void(std::string_view)> insertText;  // a view puts plain text at its caret

  // Puts rich text at the end.
  void Append(RichText addition) {
    text.Append(std::move(addition));
    document.changed = true;
    if (onAppended) onAppended();
  }
};

// Whether the report holds text.
inline bool ReportHasText(const Report& report) { return !report.text.IsEmpty(); }

}  // namespace tellurix
