// OLE compound files: streams by their name ([MS-CFB]).
#pragma once

#include <string>
#include <string_view>

namespace tellurix {

bool IsCompoundFile(std::string_view bytes);

// The first of the named streams that is there. False when there is none or the file is damaged.
bool ReadStream(std::string_view file, std::initializer_list<std::string_view> names, std::string& stream);

}  // namespace tellurix
