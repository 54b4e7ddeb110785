#include "desktop/ReportDefaults.h"

#include <array>
#include <cmath>
#include <string>

#include "host/Form.h"
#include "numeric/Rounding.h"
#include "session/SessionSettings.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

constexpr double UnitsInFile = 100;   // margins are kept in hundredths of a centimetre
constexpr double LargestMargin = 10;  // centimetres

struct Margin {
  const char* key;
  const char* caption;
  double PageSetup::*side;
};
constexpr std::array<Margin, 4> Margins{{{"PrintMarginLeft", "&Left margin", &PageSetup::left},
                                         {"PrintMarginRight", "&Right margin", &PageSetup::right},
                                         {"PrintMarginTop", "&Top margin", &PageSetup::top},
                                         {"PrintMarginBottom", "&Bottom margin", &PageSetup::bottom}}};

double PerUnit(bool inches) { return inches ? CentimetresPerInch : 1; }

}  // namespace

PageSetup PageOf(const Settings& settings, PageSetup page) {
  for (const Margin& margin : Margins) {
    const double kept = ParseInteger(SettingValue(settings, "Report", margin.key)) / UnitsInFile;
    if (kept >= 0 && kept <= LargestMargin) page.*margin.side = kept;
  }
  return page;
}

bool ReportDefaults(Session& session) {
  const Formatter format = session.Format();
  const PageSetup page = PageOf(session.settings);
  bool inches = ParseInteger(SettingValue(session.settings, "Report", "Units")) != 0;

  Form form("ReportDefaults", "Report Defaults");
  form.helpContext = session.HelpContext;
  form.AddRadio("centimetres", "&Centimetres", "Units", !inches);
  form.AddRadio("inches", "&Inches", "Units", inches);
  for (const Margin& margin : Margins) {
    form.AddText(margin.key, margin.caption, format.FormatValue(page.*margin.side / PerUnit(inches), 2).text);
  }
  form.AddButton("OK", "&OK", ButtonRole::Default);
  form.AddButton("Cancel", "&Cancel", ButtonRole::Cancel);
  const auto typed = [&](const Margin& margin) {
    return ReadNumber(form.ValueOf(margin.key), session.options.regional);
  };
  // Another unit shows the same lengths.
  form.onChange = [&](const Control& control) {
    if (control.kind != ControlKind::Radio || (control.id == "inches") == inches) return;
    for (const Margin& margin : Margins) {
      const auto length = typed(margin);
      if (!length) continue;
      const double other = *length * PerUnit(inches) / PerUnit(!inches);
      form.Update(margin.key, [&](Control& entry) { entry.value = format.FormatValue(other, 2).text; });
    }
    inches = !inches;
  };
  form.onPress = [&](const Control&) {
    for (const Margin& margin : Margins) {
      const auto length = typed(margin);
      if (!length || *length < 0 || *length * PerUnit(inches) > LargestMargin) return session.data.ShowInvalidData();
    }
    form.Finish(true);
  };
  NormalPointer(session);
  if (!session.host.RunForm(form)) return false;
  session.settings.SetIniValue("Report", "Units", inches ? "1" : "0");
  for (const Margin& margin : Margins) {
    const int kept = ToInteger(*typed(margin) * PerUnit(inches) * UnitsInFile);
    session.settings.SetIniValue("Report", margin.key, std::to_string(kept));
  }
  return true;
}

}  // namespace tellurix
