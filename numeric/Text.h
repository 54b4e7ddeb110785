// Text as the system compares and measures it. All text is UTF-8.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tellurix {

// Without blanks, tabs and line breaks at both ends.
std::string_view Trim(std::string_view text);

// The key under which texts that differ only in case are equal ("Été" and "ÉTÉ"). Invalid bytes stand for themselves.
std::string FoldCase(std::string_view text);

// Every letter in upper case, for showing. Invalid bytes stand for themselves.
std::string UpperCase(std::string_view text);

// Equality and search as the whole system compares: without regard to case.
bool EqualNoCase(std::string_view a, std::string_view b);
bool StartsWithNoCase(std::string_view text, std::string_view prefix);

bool IsValidUtf8(std::string_view text);

// Text of unknown origin as UTF-8: valid UTF-8 comes back as it is, anything else is read as Windows-1252.
std::string ToUtf8(std::string_view bytes);

// The code points of the text; an invalid byte is U+FFFD.
std::u32string CodePoints(std::string_view text);

// One code point as UTF-8; U+FFFD for what is not a code point.
std::string EncodeUtf8(char32_t codePoint);

// Number of code points, and columns that the text takes in a fixed-width font (wide characters count two, combining
// ones none).
std::size_t CharacterCount(std::string_view text);
std::size_t DisplayWidth(std::string_view text);

// The parts between separators; an empty text has one empty part.
std::vector<std::string> Split(std::string_view text, char separator);

// The texts, each one different from the others without regard to case: "x", "x (2)".
std::vector<std::string> Distinct(std::vector<std::string> texts);

// Every occurrence of `from` replaced by `to`.
std::string ReplaceAll(std::string_view text, std::string_view from, std::string_view to);

}  // namespace tellurix
