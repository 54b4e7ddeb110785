// Picture groups of rich text.
#pragma once

#include <string>

#include "report/RichText.h"
#include "report/RtfLexer.h"

namespace tellurix {

// Reads on behind the word \pict up to and with the brace that closes the group. `start` is the position of the \pict.
PictureGroup ReadPicture(RtfLexer& lexer, std::string_view bytes, std::size_t start);

// The group as it goes into a file.
std::string PictureText(const PictureGroup& picture);

// Width and height to be shown, in twips; from the picture's own units where it names no goal.
std::pair<int, int> PictureSize(const PictureGroup& picture);

}  // namespace tellurix
