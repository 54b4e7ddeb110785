#include "report/RtfCodePage.h"

#include <iconv.h>
#include <cerrno>
#include <utility>

#include "numeric/Text.h"

namespace tellurix {

namespace {

constexpr char32_t Unknown = 0xFFFD;

struct PageName {
  int number;
  const char* name;
  bool longCharacters = false;  // of several bytes
};

// The code pages that are read; anything else is 1252, the first. The list also bounds what a broken file makes us
// open.
constexpr std::array<PageName, 32> Pages{
    {{1252, "CP1252"},     {437, "CP437"},        {737, "CP737"},       {775, "CP775"},       {850, "CP850"},
     {852, "CP852"},       {855, "CP855"},        {857, "CP857"},       {860, "CP860"},       {861, "CP861"},
     {862, "CP862"},       {863, "CP863"},        {864, "CP864"},       {865, "CP865"},       {866, "CP866"},
     {869, "CP869"},       {874, "CP874"},        {932, "CP932", true}, {936, "CP936", true}, {949, "CP949", true},
     {950, "CP950", true}, {1250, "CP1250"},      {1251, "CP1251"},     {1253, "CP1253"},     {1254, "CP1254"},
     {1255, "CP1255"},     {1256, "CP1256"},      {1257, "CP1257"},     {1258, "CP1258"},     {1361, "CP1361", true},
     {10000, "MACINTOSH"}, {65001, "UTF-8", true}}};

const PageName& FindPage(int number) {
  for (const auto& page : Pages) {
    if (page.number == number) return page;
  }
  return Pages.front();
}

}  // namespace

int CodePageOfCharset(int charset, int standard) {
  static constexpr std::array<std::pair<int, int>, 19> codePages{{{0, 1252},
                                                                  {2, SymbolCodePage},
                                                                  {77, 10000},
                                                                  {128, 932},
                                                                  {129, 949},
                                                                  {130, 1361},
                                                                  {134, 936},
                                                                  {136, 950},
                                                                  {161, 1253},
                                                                  {162, 1254},
                                                                  {163, 1258},
                                                                  {177, 1255},
                                                                  {178, 1256},
                                                                  {186, 1257},
                                                                  {204, 1251},
                                                                  {222, 874},
                                                                  {238, 1250},
                                                                  {254, 437},
                                                                  {255, 850}}};
  for (const auto& [number, codePage] : codePages) {
    if (number == charset) return codePage;
  }
  return standard;
}

char32_t SymbolCharacter(unsigned char place) {
  static constexpr std::array<char16_t, 224> places{
      // 0x20
      0x0020, 0x0021, 0x2200, 0x0023, 0x2203, 0x0025, 0x0026, 0x220B, 0x0028, 0x0029, 0x2217, 0x002B, 0x002C, 0x2212,
      0x002E, 0x002F, 0x0030, 0x0031, 0x0032, 0x0033, 0x0034, 0x0035, 0x0036, 0x0037, 0x0038, 0x0039, 0x003A, 0x003B,
      0x003C, 0x003D, 0x003E, 0x003F,
      // 0x40
      0x2245, 0x0391, 0x0392, 0x03A7, 0x0394, 0x0395, 0x03A6, 0x0393, 0x0397, 0x0399, 0x03D1, 0x039A, 0x039B, 0x039C,
      0x039D, 0x039F, 0x03A0, 0x0398, 0x03A1, 0x03A3, 0x03A4, 0x03A5, 0x03C2, 0x03A9, 0x039E, 0x03A8, 0x0396, 0x005B,
      0x2234, 0x005D, 0x22A5, 0x005F,
      // 0x60
      0x203E, 0x03B1, 0x03B2, 0x03C7, 0x03B4, 0x03B5, 0x03C6, 0x03B3, 0x03B7, 0x03B9, 0x03D5, 0x03BA, 0x03BB, 0x03BC,
      0x03BD, 0x03BF, 0x03C0, 0x03B8, 0x03C1, 0x03C3, 0x03C4, 0x03C5, 0x03D6, 0x03C9, 0x03BE, 0x03C8, 0x03B6, 0x007B,
      0x007C, 0x007D, 0x223C, 0xFFFD,
      // 0x80
      0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD,
      0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD,
      0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD,
      // 0xA0
      0x20AC, 0x03D2, 0x2032, 0x2264, 0x2044, 0x221E, 0x0192, 0x2663, 0x2666, 0x2665, 0x2660, 0x2194, 0x2190, 0x2191,
      0x2192, 0x2193, 0x00B0, 0x00B1, 0x2033, 0x2265, 0x00D7, 0x221D, 0x2202, 0x2022, 0x00F7, 0x2260, 0x2261, 0x2248,
      0x2026, 0x23D0, 0x23AF, 0x21B5,
      // 0xC0
      0x2135, 0x2111, 0x211C, 0x2118, 0x2297, 0x2295, 0x2205, 0x2229, 0x222A, 0x2283, 0x2287, 0x2284, 0x2282, 0x2286,
      0x2208, 0x2209, 0x2220, 0x2207, 0x00AE, 0x00A9, 0x2122, 0x220F, 0x221A, 0x22C5, 0x00AC, 0x2227, 0x2228, 0x21D4,
      0x21D0, 0x21D1, 0x21D2, 0x21D3,
      // 0xE0
      0x25CA, 0x2329, 0x00AE, 0x00A9, 0x2122, 0x2211, 0x239B, 0x239C, 0x239D, 0x23A1, 0x23A2, 0x23A3, 0x23A7, 0x23A8,
      0x23A9, 0x23AA, 0xFFFD, 0x232A, 0x222B, 0x2320, 0x23AE, 0x2321, 0x239E, 0x239F, 0x23A0, 0x23A4, 0x23A5, 0x23A6,
      0x23AB, 0x23AC, 0x23AD, 0xFFFD};
  return place < 0x20 ? Unknown : places[place - 0x20];
}

class RtfDecoder::Page {
 public:
  explicit Page(const PageName& page)
      : converter_(iconv_open("UTF-8", page.name)), longCharacters_(page.longCharacters) {
    if (longCharacters_) return;
    for (int byte = 0; byte < 256; ++byte) {
      std::string text;
      const char one = static_cast<char>(byte);
      if (byte < 0x80) {
        text.assign(1, one);
      } else if (Convert(std::string_view(&one, 1), text) != 0) {
        text = EncodeUtf8(Unknown);
      }
      characters_[static_cast<std::size_t>(byte)] = std::move(text);
    }
  }
  ~Page() {
    if (IsOpen()) iconv_close(converter_);
  }
  Page(const Page&) = delete;
  Page& operator=(const Page&) = delete;

  bool HasLongCharacters() const { return longCharacters_; }
  const std::string& Character(unsigned char byte) const { return characters_[byte]; }

  // 0, or the error of iconv: EINVAL when the character is not complete.
  int Convert(std::string_view bytes, std::string& text) const {
    if (!IsOpen()) return EILSEQ;
    std::array<char, 64> buffer{};
    char* in = const_cast<char*>(bytes.data());
    char* out = buffer.data();
    std::size_t inLeft = bytes.size();
    std::size_t outLeft = buffer.size();
    int error = 0;
    if (iconv(converter_, &in, &inLeft, &out, &outLeft) == static_cast<std::size_t>(-1)) error = errno;
    // The second call gives out what the Hebrew and Vietnamese pages hold back to compose with a following mark.
    if (error == 0) iconv(converter_, nullptr, nullptr, &out, &outLeft);
    iconv(converter_, nullptr, nullptr, nullptr, nullptr);
    text.assign(buffer.data(), buffer.size() - outLeft);
    return error;
  }

 private:
  bool IsOpen() const { return converter_ != reinterpret_cast<iconv_t>(-1); }  // NOLINT(performance-no-int-to-ptr)

  iconv_t converter_;
  bool longCharacters_;
  std::array<std::string, 256> characters_;
};

RtfDecoder::RtfDecoder() = default;
RtfDecoder::~RtfDecoder() = default;

const RtfDecoder::Page& RtfDecoder::PageOf(int codePage) {
  if (codePage != lastNumber_ || lastPage_ == nullptr) {
    const PageName& name = FindPage(codePage);
    auto& page = pages_[name.number];
    if (page == nullptr) page = std::make_unique<Page>(name);
    lastNumber_ = codePage;
    lastPage_ = page.get();
  }
  return *lastPage_;
}

std::string RtfDecoder::Decode(unsigned char byte, int codePage) {
  if (codePage == SymbolCodePage) return Flush() + EncodeUtf8(0xF000U + byte);
  const Page& page = PageOf(codePage);
  if (!page.HasLongCharacters()) {
    if (pending_.empty()) return page.Character(byte);
    return Flush() + page.Character(byte);
  }
  if (pending_.empty() && byte < 0x80) return std::string(1, static_cast<char>(byte));
  pending_.push_back(static_cast<char>(byte));
  std::string text;
  const int error = page.Convert(pending_, text);
  if (error == EINVAL && pending_.size() < 4) return {};
  const bool retry = error != 0 && pending_.size() > 1;
  pending_.clear();
  if (error == 0) return text;
  text = EncodeUtf8(Unknown);
  return retry ? text + Decode(byte, codePage) : text;  // the byte may begin the next character
}

std::string RtfDecoder::Flush() {
  if (pending_.empty()) return {};
  pending_.clear();
  return EncodeUtf8(Unknown);
}

}  // namespace tellurix
