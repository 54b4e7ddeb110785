#include "desktop/ReportDefaults.h"

#include <array>
#include <cmath>
#include <optional>
#include <string>

#include "host/Form.h"
#include "numeric/Rounding.h"
#include "session/SessionSettings.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

constexpr double UnitsInFile = 100;   // lengths are kept in hundredths of a centimetre
constexpr double LargestLength = 10;  // centimetres
constexpr double TwipsPerCentimetre = 1440 / CentimetresPerInch;

struct Length {
  const char* key;
  const char* caption;
  double PageSetup::*margin = nullptr;  // an indent has none
};
constexpr std::array<Length, 7> Lengths{{{"PrintMarginLeft", "&Left margin", &PageSetup::left},
                                         {"PrintMarginRight", "&Right margin", &PageSetup::right},
                                         {"PrintMarginTop", "&Top margin", &PageSetup::top},
                                         {"PrintMarginBottom", "&Bottom margin", &PageSetup::bottom},
                                         {"PageIndentLeft", "Indent l&eft"},
                                         {"PageIndentHanging", "&Hanging indent"},
                                         {"PageIndentRight", "Indent ri&ght"}}};

// In centimetres; nothing when what is kept is no length.
std::optional<double> Kept(const Settings& settings, const char* key) {
  const double kept = ParseInteger(SettingValue(settings, "Report", key)) / UnitsInFile;
  return kept >= 0 && kept <= LargestLength ? std::optional(kept) : std::nullopt;
}

double PerUnit(bool inches) { return inches ? CentimetresPerInch : 1; }

}  // namespace

PageSetup PageOf(const Settings& settings, PageSetup page) {
  for (const Length& length : Lengths) {
    const auto kept = length.margin ? Kept(settings, length.key) : std::nullopt;
    if (kept) page.*length.margin = *kept;
  }
  return page;
}

void SetStartIndents(ReportView& view, const Settings& settings) {
  const auto twips = [&](const char* key) { return ToInteger(Kept(settings, key).value_or(0) * TwipsPerCentimetre); };
  // A hanging indent moves all lines but the first one.
  const int hanging = twips("PageIndentHanging");
  view.SetStartIndents(twips("PageIndentLeft") + hanging, -hanging, twips("PageIndentRight"));
}

bool ReportDefaults(Session& session) {
  const Formatter format = session.Format();
  const PageSetup page = PageOf(session.settings);
  bool inches = ParseInteger(SettingValue(session.settings, "Report", "Units")) != 0;

  Form form("ReportDefaults", "Report Defaults");
  form.helpContext = session.HelpContext;
  form.AddRadio("centimetres", "&Centimetres", "Units", !inches);
  form.AddRadio("inches", "&Inches", "Units", inches);
  for (const Length& length : Lengths) {
    const double kept = length.margin ? page.*length.margin : Kept(session.settings, length.key).value_or(0);
    form.AddText(length.key, length.caption, format.FormatValue(kept / PerUnit(inches), 2).text);
  }
  form.AddButton("OK", "&OK", ButtonRole::Default);
  form.AddButton("Cancel", "&Cancel", ButtonRole::Cancel);
  const auto typed = [&](const Length& length) {
    return ReadNumber(form.ValueOf(length.key), session.options.regional);
  };
  // Another unit shows the same lengths.
  form.onChange = [&](const Control& control) {
    if (control.kind != ControlKind::Radio || (control.id == "inches") == inches) return;
    for (const Length& length : Lengths) {
      const auto value = typed(length);
      if (!value) continue;
      const double other = *value * PerUnit(inches) / PerUnit(!inches);
      form.Update(length.key, [&](Control& entry) { entry.value = format.FormatValue(other, 2).text; });
    }
    inches = !inches;
  };
  form.onPress = [&](const Control&) {
    for (const Length& length : Lengths) {
      const auto value = typed(length);
      if (!value || *value < 0 || *value * PerUnit(inches) > LargestLength) return session.data.ShowInvalidData();
    }
    form.Finish(true);
  };
  NormalPointer(session);
  if (!session.host.RunForm(form)) return false;
  session.settings.SetIniValue("Report", "Units", inches ? "1" : "0");
  for (const Length& length : Lengths) {
    const int kept = ToInteger(*typed(length) * PerUnit(inches) * UnitsInFile);
    session.settings.SetIniValue("Report", length.key, std::to_string(kept));
  }
  return true;
}

}  // namespace tellurix
