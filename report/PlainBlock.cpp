#include "report/PlainBlock.h"

#include <fmt/format.h>

#include "numeric/Text.h"

namespace tellurix {

void InsertPlainBlock(Report& report, std::string_view lines) {
  CharFormat format;
  format.font = "Courier New";
  RichText block;
  for (const std::string& line : Split(lines, '\n')) {
    Paragraph paragraph;
    paragraph.format.keepWithNext = true;
    if (!line.empty()) paragraph.runs.push_back({.text = line, .format = format, .picture = nullptr});
    block.blocks.emplace_back(std::move(paragraph));
  }
  CharFormat hidden = format;
  hidden.hidden = true;
  auto& first = std::get<Paragraph>(block.blocks.front()).runs;
  first.insert(first.begin(),
               {.text = fmt::format("/h/{}/", report.helpContext), .format = hidden, .picture = nullptr});
  std::get<Paragraph>(block.blocks.back()).format.keepWithNext = false;
  block.blocks.emplace_back(Paragraph());
  report.Append(std::move(block));
}

}  // namespace tellurix
