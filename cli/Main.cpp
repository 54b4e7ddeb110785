// tellurix-cli: plays scripts, verifies the validation scripts, lists the commands, converts workbooks.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "graphics/ImageExport.h"
#include "report/RichText.h"
#include "shell/CommandTable.h"
#include "shell/DocumentFiles.h"
#include "shell/ProgramFolder.h"
#include "shell/ResultsJson.h"
#include "shell/ScriptPlayer.h"
#include "shell/StartUp.h"
#include "workbook/files/WorkbookFiles.h"

namespace {

namespace fs = std::filesystem;
using namespace tellurix;

struct RunOptions {
  std::vector<std::string> files;
  std::vector<std::string> reports;
  std::string results;
  std::string record;
  std::string pictures;
  std::vector<std::string> settings;
};

int Fail(std::string_view reason) {
  fmt::print(stderr, "{}\n", reason);
  return 1;
}

// All reports of the session as one.
RichText AllReports(OpenDocuments& documents) {
  RichText all;
  for (int i = 0; i < documents.ReportCount(); ++i) all.Append(documents.ReportAt(i).text);
  return all;
}

// The report to a file by its extension, or as text to standard output.
bool WriteReport(OpenDocuments& documents, const std::string& target, std::string& problem) {
  Report report;
  report.text = AllReports(documents);
  if (target != "-") return SaveReport(report, target, problem);
  fmt::print("{}", WriteText(report.text));
  std::fflush(stdout);
  return true;
}

// Every chart of the reports, in their order, as picture-01.png and picture-01.svg and so on.
bool WritePictures(OpenDocuments& documents, const fs::path& folder, std::string& problem) {
  std::error_code error;
  fs::create_directories(folder, error);
  FontBook fonts;
  int number = 0;
  bool good = true;
  for (const auto& picture : PicturesOf(AllReports(documents))) {
    if (!DrawingOf(*picture)) continue;
    const std::string name = fmt::format("picture-{:02}", ++number);
    for (const char* extension : {".png", ".svg"}) {
      good = good && ExportPicture(*picture, fonts, folder / (name + extension), SizeFor(*picture), problem);
    }
  }
  return good;
}

int RunScripts(const RunOptions& options, const fs::path& program) {
  ScriptPlayer player(ScriptPaths(program));
  if (!options.record.empty()) player.Record();
  for (const std::string& setting : options.settings) {
    if (!player.SetSetting(setting)) return Fail(fmt::format("--set {}: no such setting", setting));
  }
  std::string reason;
  for (const std::string& file : options.files) {
    if (!player.PlayFile(file)) {
      reason = player.Failure();
      break;
    }
  }
  // What was delivered before a failure is written all the same.
  std::string problem;
  const auto keepFirst = [&](bool good) {
    if (!good && reason.empty()) reason = problem;
  };
  for (const std::string& target : options.reports) keepFirst(WriteReport(player.PlayedDocuments(), target, problem));
  if (!options.results.empty()) {
    keepFirst(WriteWholeFile(options.results, ResultsAsJson(player.PlayedSession()), problem));
  }
  if (!options.pictures.empty()) keepFirst(WritePictures(player.PlayedDocuments(), options.pictures, problem));
  if (!options.record.empty()) keepFirst(WriteWholeFile(options.record, player.Recording(), problem));
  return reason.empty() ? 0 : Fail(reason);
}

// Plays every script of a folder, or one, and shows what was compared with which source.
int Verify(const fs::path& target, const fs::path& program) {
  std::vector<fs::path> files;
  std::error_code error;
  if (fs::is_directory(target, error)) {
    for (const auto& entry : fs::directory_iterator(target, error)) {
      if (entry.path().extension() == ".tlx") files.push_back(entry.path());
    }
    std::ranges::sort(files);
  } else {
    files.push_back(target);
  }
  int passed = 0, failed = 0;
  std::size_t compared = 0;
  std::vector<std::string> failures;
  fmt::print("{:<28} {:>8}  {:<6}  {}\n", "script", "compared", "result", "source");
  for (const fs::path& file : files) {
    ScriptPlayer player(ScriptPaths(program));
    const bool good = player.PlayFile(file);
    const std::size_t count = player.Comparisons().size();
    fmt::print("{:<28} {:>8}  {:<6}  {}\n", file.stem().string(), count, good ? "pass" : "FAIL", player.Source());
    compared += count;
    ++(good ? passed : failed);
    if (!good) failures.push_back(player.Failure());
  }
  for (const std::string& failure : failures) fmt::print(stderr, "{}\n", failure);
  fmt::print("{} figures and texts compared\n{} passed, {} failed\n", compared, passed, failed);
  return failed == 0 && passed > 0 ? 0 : 1;
}

// A workbook from one format to another, the second one by its extension.
int Convert(const fs::path& from, const fs::path& to) {
  const auto type = WorkbookTypeOf(to);
  if (!type) return Fail(fmt::format("{}: the extension stands for no kind of workbook", to.string()));
  Workbook workbook;
  std::string problem;
  if (!ReadWorkbookFile(from, workbook, Regional(), {}, problem)) {
    return Fail(fmt::format("{} could not be read. {}", from.string(), problem));
  }
  if (!WriteWorkbookFile(workbook, to, *type, problem)) {
    return Fail(fmt::format("Error saving {}: {}", to.string(), problem));
  }
  return 0;
}

int ListCommands() {
  for (const MenuEntry& entry : CommandTable()) {
    fmt::print("{}\t{}\t{}\n", entry.path, entry.name, entry.command ? "ready" : "-");
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Tellurix on the command line");
  app.require_subcommand(1);

  RunOptions run;
  CLI::App* runCommand = app.add_subcommand("run", "play scripts");
  runCommand->add_option("FILE", run.files, "scripts, played one after the other")->required();
  runCommand
      ->add_option("--report", run.reports, "write the report as .rtf, .html or .txt; - for text on standard output")
      ->allow_extra_args(false);
  runCommand->add_option("--results", run.results, "write every figure, unrounded, as JSON");
  runCommand->add_option("--pictures", run.pictures, "write every chart into a folder, as .png and .svg");
  runCommand->add_option("--record", run.record, "write what was done as a script");
  runCommand->add_option("--set", run.settings, "a setting in force, Section.Key=value")->allow_extra_args(false);

  std::string folder = "tests/validation";
  CLI::App* verifyCommand = app.add_subcommand("verify", "play every validation script of a folder");
  verifyCommand->add_option("FOLDER", folder, "the folder, or one script");

  CLI::App* commandsCommand = app.add_subcommand("commands", "list the menu tree");

  std::string from, to;
  CLI::App* convertCommand = app.add_subcommand("convert", "write a workbook as a file of another kind");
  convertCommand->add_option("IN", from, "a workbook: tlw, xls, xlsx, ods, gnumeric, csv, tab")->required();
  convertCommand->add_option("OUT", to, "the file to write: tlw, xls, xlsx, csv, tab, htm")->required();

  CLI11_PARSE(app, argc, argv);
  if (commandsCommand->parsed()) return ListCommands();
  if (convertCommand->parsed()) return Convert(from, to);

  const auto program = FindProgramFolder();
  if (!program || !ProgramFilesArePresent({.program = *program})) return Fail(MissingFilesText());
  try {
    return runCommand->parsed() ? RunScripts(run, *program) : Verify(folder, *program);
  } catch (const std::exception& error) {
    return Fail(fmt::format("Error: {}", error.what()));
  }
}
