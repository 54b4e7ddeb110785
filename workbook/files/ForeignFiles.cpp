#include "workbook/files/ForeignFiles.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "workbook/files/ChildProcess.h"
#include "workbook/FileBeside.h"
#include "workbook/files/NativeWorkbook.h"
#include "workbook/files/XlsxWriter.h"

namespace tellurix {

namespace fs = std::filesystem;

namespace {

constexpr const char* ReadingText = "Importing data";
constexpr const char* Office = "soffice";
constexpr double OfficeSeconds = 120;
constexpr std::string_view OleMark{"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8};

fs::path ReaderProgram() {
  if (const char* named = std::getenv("TELLURIX_READER"); named && *named) return named;
  std::error_code error;
  return fs::read_symlink("/proc/self/exe", error).parent_path() / "tellurix-reader";
}

// Far more than a sound file needs.
ChildLimits LimitsFor(const fs::path& path) {
  std::error_code error;
  const auto size = fs::file_size(path, error);
  const double megabytes = error ? 0 : static_cast<double>(size) / 1e6;
  constexpr int Seconds = 2, SecondsForMegabyte = 5;
  constexpr double MostSeconds = 600;
  constexpr std::uint64_t Memory = std::uint64_t{1} << 30, MostMemory = std::uint64_t{16} << 30;
  constexpr std::uint64_t MemoryForByte = 200;
  const double seconds = std::min(Seconds + SecondsForMegabyte * megabytes, MostSeconds);
  const std::uint64_t memory = error ? Memory : std::min(Memory + MemoryForByte * size, MostMemory);
  return {static_cast<int>(seconds), memory, 2 * seconds};
}

std::string Words(ChildEnd end, const std::string& output) {
  switch (end) {
    case ChildEnd::Failed:
      return output.empty() ? "The file could not be read." : output;
    case ChildEnd::Crashed:
      return "The file is damaged: its reader broke down.";
    case ChildEnd::TookTooLong:
      return "The file is damaged: reading it took too long.";
    case ChildEnd::NotStarted:
      return "The program tellurix-reader is not installed.";
    default:
      return {};
  }
}

// Has LibreOffice convert a file into a folder; the name of the result there is that of the file with the extension.
bool Convert(const fs::path& file, const fs::path& folder, const std::string& extension, const std::string& filter,
             const Poll& poll, std::string& problem) {
  std::error_code error;
  const std::string profile = "-env:UserInstallation=file://" + (folder / "profile").string();
  const std::string kind = filter.empty() ? extension : extension + ":" + filter;
  std::string output;
  const ChildEnd end = RunChild({Office, profile, "--headless", "--norestore", "--convert-to", kind, "--outdir",
                                 folder.string(), fs::absolute(file, error).string()},
                                {.seconds = OfficeSeconds}, poll, ReadingText, output);
  if (end == ChildEnd::Stopped) {
    problem.clear();
    return false;
  }
  if (end == ChildEnd::NotStarted) problem = "LibreOffice, which could convert the file, is not installed.";
  if (end == ChildEnd::TookTooLong) problem = "LibreOffice took too long to convert the file.";
  if (end == ChildEnd::Failed || end == ChildEnd::Crashed) problem = "LibreOffice could not convert the file.";
  if (end != ChildEnd::Good) return false;
  if (fs::exists(folder / file.stem().concat("." + extension), error)) return true;
  problem = "LibreOffice could not convert the file.";
  return false;
}

}  // namespace

bool IsXls(std::string_view head) {
  if (head.starts_with(OleMark)) return true;
  // The record that begins a stream of BIFF 2 to 5: 09 and the version in two bytes, then its length.
  return head.size() > 4 && head[0] == 9 && (head[1] == 0 || head[1] == 2 || head[1] == 4 || head[1] == 8) &&
         head[2] >= 4 && head[2] <= 16 && head[3] == 0;
}

bool IsForeign(std::string_view head) {
  return IsXls(head) || head.starts_with("PK\x03\x04") || head.starts_with("\x1F\x8B") ||
         (head.starts_with("<?xml") && head.find("gnumeric") != std::string_view::npos);
}

bool ReadByReader(const fs::path& path, Workbook& workbook, const Poll& poll, std::string& problem) {
  const TemporaryFolder folder;
  if (!folder.IsMade()) {
    problem = "A temporary folder cannot be made.";
    return false;
  }
  const fs::path read = folder.Path() / "read.tlw";
  std::string output;
  std::error_code error;
  const ChildEnd end = RunChild({ReaderProgram().string(), fs::absolute(path, error).string(), read.string()},
                                LimitsFor(path), poll, ReadingText, output);
  if (end == ChildEnd::Good) return ReadNativeWorkbook(read, workbook, problem);
  problem = Words(end, output);
  return false;
}

bool HasOffice() { return !FindProgram(Office).empty(); }

bool ReadByOffice(const fs::path& path, Workbook& workbook, const Poll& poll, std::string& problem) {
  const TemporaryFolder folder;
  if (!Convert(path, folder.Path(), "xlsx", {}, poll, problem)) return false;
  return ReadByReader(folder.Path() / path.stem().concat(".xlsx"), workbook, poll, problem);
}

bool WriteByOffice(const Workbook& workbook, const fs::path& path, const std::string& extension,
                   const std::string& filter, std::string& problem) {
  const TemporaryFolder from, to;
  if (!WriteXlsx(workbook, from.Path() / "book.xlsx", problem) ||
      !Convert(from.Path() / "book.xlsx", to.Path(), extension, filter, {}, problem))
    return false;
  FileBeside file(path);
  if (file.IsMade() && file.TakeOver(to.Path() / ("book." + extension)) && file.PutInPlace()) return true;
  problem = file.Problem();
  return false;
}

}  // namespace tellurix
