#include "shell/DocumentFiles.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "numeric/Text.h"
#include "report/RichText.h"
#include "workbook/DelimitedText.h"

namespace tellurix {

namespace fs = std::filesystem;

namespace {

std::string Extension(const fs::path& file) { return FoldCase(file.extension().string()); }

bool IsOneOf(const std::string& extension, std::initializer_list<const char*> known) {
  for (const char* candidate : known) {
    if (extension == candidate) return true;
  }
  return false;
}

std::string Upper(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return text;
}

// What an opened document is called.
void Name(DocumentState& document, const fs::path& file) {
  std::error_code error;
  document.path = fs::absolute(file, error).string();
  document.caption = file.filename().string();
  document.changed = false;
}

bool ReadReport(OpenDocuments& documents, const fs::path& file, std::string& problem) {
  std::string bytes;
  if (!ReadWholeFile(file, bytes, problem)) return false;
  auto text = ReadRtf(bytes);
  if (!text) {
    problem = file.string() + " is not a valid (rich) text file";
    return false;
  }
  auto report = std::make_unique<Report>();
  report->text = std::move(*text);
  Name(report->document, file);
  documents.AddReport(std::move(report));
  return true;
}

bool ReadWorksheet(OpenDocuments& documents, const Regional& regional, const fs::path& file, std::string& problem) {
  auto workbook = std::make_unique<Workbook>();
  if (!ReadDelimited(file, *workbook, regional, problem, {})) return false;
  Name(workbook->document, file);
  documents.AddWorkbook(std::move(workbook));
  return true;
}

}  // namespace

bool ReadWholeFile(const fs::path& file, std::string& bytes, std::string& problem) {
  std::error_code error;
  if (!fs::exists(file, error)) {
    problem = Upper(file.string()) + " is not available";
    return false;
  }
  std::ifstream in(file, std::ios::binary);
  const auto size = fs::is_directory(file, error) ? 0 : fs::file_size(file, error);
  bytes.resize(size);
  in.read(bytes.data(), static_cast<std::streamsize>(size));
  if (!in || fs::is_directory(file, error)) {
    problem = file.string() + " could not be read.";
    return false;
  }
  return true;
}

bool WriteWholeFile(const fs::path& file, std::string_view bytes, std::string& problem) {
  std::string beside = file.string() + "~XXXXXX";
  const int handle = ::mkstemp(beside.data());
  const auto fail = [&] {
    problem = fmt::format("Error saving {}\n{}", file.string(), std::strerror(errno));
    if (handle >= 0) {
      ::close(handle);
      ::unlink(beside.c_str());
    }
    return false;
  };
  if (handle < 0) return fail();
  while (!bytes.empty()) {
    const auto written = ::write(handle, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return fail();
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  // The mode of a file made the ordinary way, not the private one of a temporary file.
  const mode_t mask = ::umask(0);
  ::umask(mask);
  if (::fchmod(handle, 0666 & ~mask) != 0 || ::fsync(handle) != 0 || ::rename(beside.c_str(), file.c_str()) != 0) {
    return fail();
  }
  ::close(handle);
  return true;
}

bool OpenDocument(OpenDocuments& documents, const Regional& regional, const fs::path& file, std::string& problem) {
  std::error_code error;
  const std::string extension = Extension(file);
  if (!fs::exists(file, error)) {
    problem = Upper(file.string()) + " is not available";
    return false;
  }
  if (IsOneOf(extension, {".csv", ".tab", ".prn", ".txt"})) return ReadWorksheet(documents, regional, file, problem);
  if (IsOneOf(extension, {".rtf", ".rtt"})) return ReadReport(documents, file, problem);
  problem = file.string() + " is not a kind of file that can be opened";
  return false;
}

bool SaveReport(const Report& report, const fs::path& file, std::string& problem) {
  const std::string extension = Extension(file);
  if (IsOneOf(extension, {".rtf", ".rtt"})) return WriteWholeFile(file, WriteRtf(report.text), problem);
  if (IsOneOf(extension, {".html", ".htm"})) {
    return WriteWholeFile(file, WriteHtml(report.text, file.stem().string()), problem);
  }
  if (extension == ".txt") return WriteWholeFile(file, WriteText(report.text), problem);
  problem = fmt::format("a report is saved as rtf, html or txt, not as {}", file.filename().string());
  return false;
}

bool SaveWorkbook(const Workbook& workbook, const fs::path& file, std::string& problem) {
  const std::string extension = Extension(file);
  if (!IsOneOf(extension, {".csv", ".tab", ".txt"})) {
    problem = fmt::format("a workbook is saved as csv or tab, not as {}", file.filename().string());
    return false;
  }
  return WriteDelimited(workbook, file, extension == ".csv" ? ',' : '\t', problem);
}

}  // namespace tellurix
