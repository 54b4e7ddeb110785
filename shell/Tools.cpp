#include "shell/Tools.h"

#include <fmt/format.h>

#include "host/Form.h"
#include "numeric/Text.h"
#include "session/SessionSettings.h"
#include "session/Skeleton.h"
#include "shell/Product.h"

namespace tellurix {

namespace {

constexpr int EmptyRows = 4;  // below the tools, for new ones

std::string ToolKey(const char* name, std::size_t number) { return fmt::format("{}{}", name, number); }

bool HoldsNoCase(std::string_view text, std::string_view part) {
  return FoldCase(text).find(FoldCase(part)) != std::string::npos;
}

// The default tools name editors of another system; here they stand for the first of this system's own that there is.
std::vector<std::string> ProgramsFor(const std::string& commandLine) {
  if (EqualNoCase(commandLine, "notepad.exe")) {
    return {"gnome-text-editor", "gedit", "kate", "kwrite", "mousepad", "xed", "pluma", "featherpad"};
  }
  if (EqualNoCase(commandLine, "wordpad.exe")) return {"libreoffice --writer", "abiword", "calligrawords"};
  return {commandLine};
}

}  // namespace

std::vector<Tool> ConfiguredTools(const Session& session) {
  std::vector<Tool> tools;
  for (std::size_t n = 1;; ++n) {
    Tool tool{SettingValue(session.settings, "Tools", ToolKey("Caption", n)),
              SettingValue(session.settings, "Tools", ToolKey("CommandLine", n))};
    if (tool.caption.empty()) return tools;
    tools.push_back(std::move(tool));
  }
}

void RunTool(Session& session, const Tool& tool, const std::function<void()>& showCalculator) {
  const std::string line(Trim(tool.commandLine));
  if (HoldsNoCase(line, "TellurixCalculator")) return showCalculator();
  if (HoldsNoCase(line, "update")) {
    const auto updater = session.paths.program / "TellurixUpdater";
    if (!session.host.RunProgram(fmt::format("\"{}\" {}", updater.string(), ProductVersion))) {
      ShowMessage(session, "Could not run updater", WarningIcon);
    }
    return;
  }
  for (const std::string& program : ProgramsFor(line)) {
    if (session.host.RunProgram(program)) return;
  }
  ShowMessage(session, "Could not run external application", WarningIcon);
}

void SetupTools(Session& session) {
  Form form("Apps", "Setup Tools Menu");
  form.helpContext = session.HelpContext;
  Control grid{.kind = ControlKind::Grid, .id = "grid", .items = {"Caption", "Command Line"}};
  for (const Tool& tool : ConfiguredTools(session)) grid.cells.push_back({tool.caption, tool.commandLine});
  for (int i = 0; i < EmptyRows; ++i) grid.cells.push_back({"", ""});
  form.Add(std::move(grid));
  const bool linked = SettingValue(session.settings, "Paths", "ExcelTellurixLink") == "1";
  form.AddLabel("linklabel", "Excel Link:");
  form.AddRadio("xlon", "On", "Excel Link", linked);
  form.AddRadio("xloff", "Off", "Excel Link", !linked);
  form.AddButton("OK", "&OK", ButtonRole::Default);
  form.AddButton("Cancel", "&Cancel", ButtonRole::Cancel);
  NormalPointer(session);
  if (!session.host.RunForm(form)) return;

  std::size_t n = 0;
  for (const auto& row : form.Find("grid")->cells) {
    if (row.empty() || Trim(row.front()).empty()) continue;
    ++n;
    session.settings.SetIniValue("Tools", ToolKey("Caption", n), Trim(row.front()));
    session.settings.SetIniValue("Tools", ToolKey("CommandLine", n), row.size() > 1 ? Trim(row[1]) : "");
  }
  // What stood behind the last one is no tool any more.
  for (++n; !SettingValue(session.settings, "Tools", ToolKey("Caption", n)).empty(); ++n) {
    session.settings.SetIniValue("Tools", ToolKey("Caption", n), "");
  }
  session.settings.SetIniValue("Paths", "ExcelTellurixLink", form.IsChecked("xlon") ? "1" : "0");
}

}  // namespace tellurix
