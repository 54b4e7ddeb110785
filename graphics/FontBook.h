// Fonts by name, and how wide text is in them. Faces come from fontconfig; the Liberation fonts stand for Arial, Times
// New Roman and Courier New, so that a page comes out alike on every machine. Outlines are neither hinted nor measured
// on a pixel grid: widths are proportional to the size.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

typedef struct _cairo_font_face cairo_font_face_t;

namespace tellurix {

struct FaceName {
  std::string family;
  bool bold = false;
  bool italic = false;

  auto operator<=>(const FaceName&) const = default;
};

// A stretch of text that one face has the characters of.
struct FaceRun {
  cairo_font_face_t* face = nullptr;  // owned by the book
  std::string text;
};

class FontBook {
 public:
  FontBook();
  ~FontBook();
  FontBook(const FontBook&) = delete;
  FontBook& operator=(const FontBook&) = delete;

  // Told once for each font that the machine lacks, with a sentence that names it and what stands for it.
  std::function<void(const std::string&)> onMissing;

  // The text in stretches; characters that the face lacks come from another one.
  std::vector<FaceRun> Runs(std::string_view text, const FaceName& name);

  // Advance width of the text, and how far the face reaches above and below its baseline, at an em of `size`.
  double Width(std::string_view text, const FaceName& name, double size);
  double Ascent(const FaceName& name, double size);
  double Descent(const FaceName& name, double size);

 private:
  struct Face;
  Face& Find(const FaceName& name);
  std::unique_ptr<Face> Load(const FaceName& name);
  Face* FaceWith(char32_t character, const FaceName& name);

  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tellurix
