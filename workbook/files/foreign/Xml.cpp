#include "workbook/files/foreign/Xml.h"

#include <expat.h>

#include <algorithm>
#include <charconv>
#include <exception>
#include <memory>
#include <type_traits>

namespace tellurix {

namespace {

std::string_view WithoutPrefix(std::string_view name) {
  const std::size_t colon = name.rfind(':');
  return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

// What a handler throws must not pass through the parser.
struct Parsing {
  XmlHandler& handler;
  XML_Parser parser;
  std::exception_ptr thrown;

  template <typename Call>
  void Guard(Call call) {
    try {
      if (!thrown) call();
    } catch (...) {
      thrown = std::current_exception();
      XML_StopParser(parser, XML_FALSE);
    }
  }
};

Parsing& Of(void* data) { return *static_cast<Parsing*>(data); }

void OnStart(void* data, const char* name, const char** attributes) {
  Of(data).Guard([&] { Of(data).handler.Start(WithoutPrefix(name), XmlAttributes(attributes)); });
}
void OnEnd(void* data, const char* name) {
  Of(data).Guard([&] { Of(data).handler.End(WithoutPrefix(name)); });
}
void OnText(void* data, const char* text, int length) {
  Of(data).Guard([&] { Of(data).handler.Text({text, static_cast<std::size_t>(length)}); });
}

template <typename Number>
Number Read(std::string_view text, Number otherwise) {
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() ? value : otherwise;
}

}  // namespace

std::string_view XmlAttributes::operator[](std::string_view name) const {
  for (const char** pair = pairs_; *pair; pair += 2) {
    if (name == *pair) return pair[1];
  }
  return {};
}

std::string_view XmlAttributes::EndingIn(std::string_view end) const {
  for (const char** pair = pairs_; *pair; pair += 2) {
    if (std::string_view(*pair).ends_with(end)) return pair[1];
  }
  return {};
}

bool XmlAttributes::Has(std::string_view name) const { return (*this)[name].data() != nullptr; }

double XmlAttributes::Number(std::string_view name, double otherwise) const { return Read((*this)[name], otherwise); }
int XmlAttributes::Integer(std::string_view name, int otherwise) const { return Read((*this)[name], otherwise); }
bool XmlAttributes::Logical(std::string_view name, bool otherwise) const {
  const std::string_view value = (*this)[name];
  return value.empty() ? otherwise : value == "1" || value == "true";
}

bool ParseXml(std::string_view bytes, XmlHandler& handler) {
  const std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr),
                                                                                             XML_ParserFree);
  if (!parser) return false;
  Parsing parsing{handler, parser.get(), nullptr};
  XML_SetUserData(parser.get(), &parsing);
  XML_SetElementHandler(parser.get(), OnStart, OnEnd);
  XML_SetCharacterDataHandler(parser.get(), OnText);
  constexpr std::size_t Most = std::size_t{1} << 24;  // at once
  bool good = true;
  do {
    const std::string_view part = bytes.substr(0, Most);
    bytes.remove_prefix(part.size());
    good = XML_Parse(parser.get(), part.data(), static_cast<int>(part.size()), bytes.empty()) == XML_STATUS_OK;
  } while (good && !bytes.empty());
  if (parsing.thrown) std::rethrow_exception(parsing.thrown);
  return good;
}

}  // namespace tellurix
