#include "graphics/FontBook.h"

#include <cairo-ft.h>
#include <cairo.h>
#include <fmt/format.h>
#include <fontconfig/fontconfig.h>
#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <map>
#include <set>

#include "numeric/Text.h"

#ifdef __SANITIZE_ADDRESS__
// What fontconfig itself keeps of its configuration files until the process ends.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig"; }
#endif

namespace tellurix {

namespace {

constexpr double MeasuringSize = 1000;
constexpr std::size_t LongestText = 20'000;  // bytes; no page shows more

struct StandIn {
  const char* name;
  const char* family;
};
constexpr std::array<StandIn, 6> StandIns{{{"Arial", "Liberation Sans"},
                                           {"Helvetica", "Liberation Sans"},
                                           {"Times New Roman", "Liberation Serif"},
                                           {"Times", "Liberation Serif"},
                                           {"Courier New", "Liberation Mono"},
                                           {"Courier", "Liberation Mono"}}};

std::string FamilyFor(const std::string& name) {
  const auto found = std::ranges::find_if(StandIns, [&](const StandIn& one) { return EqualNoCase(one.name, name); });
  return found == StandIns.end() ? name : found->family;
}

struct PatternDeleter {
  void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
using Pattern = std::unique_ptr<FcPattern, PatternDeleter>;

Pattern Match(const FaceName& name, char32_t character) {
  Pattern wanted(FcPatternCreate());
  const std::string family = FamilyFor(name.family);
  FcPatternAddString(wanted.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
  FcPatternAddInteger(wanted.get(), FC_WEIGHT, name.bold ? FC_WEIGHT_BOLD : FC_WEIGHT_NORMAL);
  FcPatternAddInteger(wanted.get(), FC_SLANT, name.italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
  FcPatternAddBool(wanted.get(), FC_SCALABLE, FcTrue);
  if (character != 0) {
    FcCharSet* characters = FcCharSetCreate();
    FcCharSetAddChar(characters, character);
    FcPatternAddCharSet(wanted.get(), FC_CHARSET, characters);
    FcCharSetDestroy(characters);
  }
  FcConfigSubstitute(nullptr, wanted.get(), FcMatchPattern);
  FcDefaultSubstitute(wanted.get());
  FcResult result = FcResultNoMatch;
  return Pattern(FcFontMatch(nullptr, wanted.get(), &result));
}

std::string FamilyOf(const FcPattern* pattern) {
  FcChar8* family = nullptr;
  const bool known = pattern && FcPatternGetString(pattern, FC_FAMILY, 0, &family) == FcResultMatch;
  return known ? reinterpret_cast<const char*>(family) : "";
}

// Valid UTF-8 on one line, which is all that faces take.
std::string Printable(std::string_view text) {
  std::string line = ToUtf8(text.substr(0, LongestText));
  for (char& c : line) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  }
  return line;
}

bool IsAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

struct FontBook::Face {
  cairo_font_face_t* face = nullptr;
  cairo_scaled_font_t* measure = nullptr;
  FcCharSet* characters = nullptr;

  Face() = default;
  Face(const Face&) = delete;
  Face& operator=(const Face&) = delete;
  ~Face() {
    if (measure) cairo_scaled_font_destroy(measure);
    if (face) cairo_font_face_destroy(face);
    if (characters) FcCharSetDestroy(characters);
  }

  bool Has(char32_t character) const { return !characters || FcCharSetHasChar(characters, character); }

  void Take(FcPattern* pattern) {
    FcCharSet* found = nullptr;
    if (pattern && FcPatternGetCharSet(pattern, FC_CHARSET, 0, &found) == FcResultMatch) {
      characters = FcCharSetCopy(found);
    }
    face = pattern ? cairo_ft_font_face_create_for_pattern(pattern)
                   : cairo_toy_font_face_create("sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_matrix_t size, unit;
    cairo_matrix_init_scale(&size, MeasuringSize, MeasuringSize);
    cairo_matrix_init_identity(&unit);
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    measure = cairo_scaled_font_create(face, &size, &unit, options);
    cairo_font_options_destroy(options);
  }
};

struct FontBook::State {
  std::map<FaceName, std::unique_ptr<Face>> faces;
  std::map<std::pair<FaceName, char32_t>, Face*> others;  // for characters that the face asked for lacks
  std::set<std::string> missing;                          // told already
};

FontBook::FontBook() : state_(std::make_unique<State>()) {}
FontBook::~FontBook() = default;

std::unique_ptr<FontBook::Face> FontBook::Load(const FaceName& name) {
  const Pattern pattern = Match(name, 0);
  const std::string family = FamilyOf(pattern.get());
  if (!EqualNoCase(family, FamilyFor(name.family)) && state_->missing.insert(FoldCase(name.family)).second) {
    if (onMissing) {
      onMissing(fmt::format("The font {} is not installed; {} stands in for it.", name.family,
                            family.empty() ? "a standard font" : family));
    }
  }
  auto face = std::make_unique<Face>();
  face->Take(pattern.get());
  return face;
}

FontBook::Face& FontBook::Find(const FaceName& name) {
  auto& face = state_->faces[name];
  if (!face) face = Load(name);
  return *face;
}

FontBook::Face* FontBook::FaceWith(char32_t character, const FaceName& name) {
  Face& own = Find(name);
  if (own.Has(character)) return &own;
  const auto key = std::pair{name, character};
  if (const auto found = state_->others.find(key); found != state_->others.end()) return found->second;
  Face* other = &own;
  const Pattern pattern = Match(name, character);
  FcCharSet* characters = nullptr;
  if (pattern && FcPatternGetCharSet(pattern.get(), FC_CHARSET, 0, &characters) == FcResultMatch &&
      FcCharSetHasChar(characters, character)) {
    auto& face = state_->faces[FaceName{FamilyOf(pattern.get()), name.bold, name.italic}];
    if (!face) {
      face = std::make_unique<Face>();
      face->Take(pattern.get());
    }
    other = face.get();
  }
  state_->others[key] = other;
  return other;
}

std::vector<FaceRun> FontBook::Runs(std::string_view text, const FaceName& name) {
  const std::string line = Printable(text);
  if (IsAscii(line)) return {{Find(name).face, line}};
  std::vector<FaceRun> runs;
  const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(line.data());
  for (std::size_t at = 0; at < line.size();) {
    utf8proc_int32_t character = 0;
    const auto used = utf8proc_iterate(bytes + at, static_cast<utf8proc_ssize_t>(line.size() - at), &character);
    const auto length = used > 0 ? static_cast<std::size_t>(used) : 1;
    cairo_font_face_t* face = FaceWith(static_cast<char32_t>(character), name)->face;
    if (runs.empty() || runs.back().face != face) runs.push_back({face, {}});
    runs.back().text.append(line, at, length);
    at += length;
  }
  return runs;
}

double FontBook::Width(std::string_view text, const FaceName& name, double size) {
  double width = 0;
  for (const FaceRun& run : Runs(text, name)) {
    for (const auto& [key, face] : state_->faces) {
      if (face->face != run.face) continue;
      cairo_text_extents_t extents;
      cairo_scaled_font_text_extents(face->measure, run.text.c_str(), &extents);
      width += extents.x_advance;
      break;
    }
  }
  return width * size / MeasuringSize;
}

double FontBook::Ascent(const FaceName& name, double size) {
  cairo_font_extents_t extents;
  cairo_scaled_font_extents(Find(name).measure, &extents);
  return extents.ascent * size / MeasuringSize;
}

double FontBook::Descent(const FaceName& name, double size) {
  cairo_font_extents_t extents;
  cairo_scaled_font_extents(Find(name).measure, &extents);
  return extents.descent * size / MeasuringSize;
}

}  // namespace tellurix
