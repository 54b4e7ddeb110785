// XML documents, element by element.
#pragma once

#include <string>
#include <string_view>

namespace tellurix {

// Of one element: by their names with prefix, as the common writers have them ("office:value"). Values hold until the
// handler returns.
class XmlAttributes {
 public:
  explicit XmlAttributes(const char** pairs) : pairs_(pairs) {}
  std::string_view operator[](std::string_view name) const;  // empty when there is none
  std::string_view EndingIn(std::string_view end) const;     // the first one whose name ends so
  bool Has(std::string_view name) const;
  double Number(std::string_view name, double otherwise = 0) const;
  int Integer(std::string_view name, int otherwise = 0) const;
  bool Logical(std::string_view name, bool otherwise) const;  // 1 or true

 private:
  const char** pairs_;
};

class XmlHandler {
 public:
  virtual ~XmlHandler() = default;
  // Names of elements come without their prefix.
  virtual void Start(std::string_view name, const XmlAttributes& attributes) = 0;
  virtual void End(std::string_view) {}
  virtual void Text(std::string_view) {}  // perhaps in several pieces
};

// False for what is no XML; the handler has got what came before.
bool ParseXml(std::string_view bytes, XmlHandler& handler);

}  // namespace tellurix
