#include "workbook/files/Sqlite.h"

#include <fmt/format.h>

#include <cctype>
#include <system_error>

namespace tellurix {

namespace {

constexpr int LongestValue = 512 << 20;  // bytes; nothing of a damaged file may ask for more

std::string AsUri(const std::filesystem::path& path) {
  std::error_code error;
  std::string uri = "file:";
  for (const char c : std::filesystem::absolute(path, error).string()) {
    if (std::isalnum(static_cast<unsigned char>(c)) || c == '/' || c == '.' || c == '-' || c == '_') {
      uri += c;
    } else {
      uri += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
  }
  return uri;
}

}  // namespace

bool SqliteDatabase::Open(const std::filesystem::path& path, const char* options, int flags) {
  sqlite3* handle = nullptr;
  const int code = sqlite3_open_v2((AsUri(path) + options).c_str(), &handle, flags | SQLITE_OPEN_URI, nullptr);
  handle_.reset(handle);
  if (!Check(code)) return false;
  sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, LongestValue);
  return true;
}

bool SqliteDatabase::OpenNew(const std::filesystem::path& path) {
  return Open(path, "?nolock=1", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
}

bool SqliteDatabase::OpenToRead(const std::filesystem::path& path) {
  if (!Open(path, "?immutable=1", SQLITE_OPEN_READONLY)) return false;
  sqlite3_db_config(handle_.get(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(handle_.get(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  sqlite3_db_config(handle_.get(), SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
  return Run("PRAGMA cell_size_check = 1");
}

bool SqliteDatabase::Run(const char* commands) {
  return Check(sqlite3_exec(handle_.get(), commands, nullptr, nullptr, nullptr));
}

int SqliteDatabase::Number(const char* query) {
  SqliteStatement statement(*this, query);
  return statement.Next() ? static_cast<int>(statement.Integer(0)) : 0;
}

bool SqliteDatabase::Close() {
  const int code = sqlite3_close(handle_.get());
  if (code == SQLITE_OK) handle_.release();
  return Check(code);
}

bool SqliteDatabase::Check(int code) {
  if (code == SQLITE_OK) return true;
  switch (code & 0xFF) {
    case SQLITE_FULL:
      problem_ = "The disk is full.";
      break;
    case SQLITE_IOERR:
      problem_ = "The disk refused to read or write.";
      break;
    default:
      problem_ = handle_ ? sqlite3_errmsg(handle_.get()) : sqlite3_errstr(code);
      break;
  }
  return false;
}

SqliteStatement::SqliteStatement(SqliteDatabase& database, const char* text) : database_(database) {
  sqlite3_stmt* handle = nullptr;
  bad_ = !database.Check(sqlite3_prepare_v2(database.handle_.get(), text, -1, &handle, nullptr));
  handle_.reset(handle);
}

SqliteStatement& SqliteStatement::Bind(int at, std::int64_t value) {
  sqlite3_bind_int64(handle_.get(), at, value);
  return *this;
}

SqliteStatement& SqliteStatement::Bind(int at, double value) {
  sqlite3_bind_double(handle_.get(), at, value);
  return *this;
}

SqliteStatement& SqliteStatement::Bind(int at, std::string_view text) {
  bad_ |= !database_.Check(
      sqlite3_bind_text64(handle_.get(), at, text.data() ? text.data() : "", text.size(), SQLITE_STATIC, SQLITE_UTF8));
  return *this;
}

SqliteStatement& SqliteStatement::BindBytes(int at, std::string_view bytes) {
  bad_ |= !database_.Check(sqlite3_bind_blob64(handle_.get(), at, bytes.data(), bytes.size(), SQLITE_STATIC));
  return *this;
}

bool SqliteStatement::Execute() {
  if (bad_) return false;
  while (Next()) {
  }
  sqlite3_reset(handle_.get());
  return !bad_;
}

bool SqliteStatement::Next() {
  if (bad_) return false;
  const int code = sqlite3_step(handle_.get());
  if (code == SQLITE_ROW) return true;
  bad_ = code != SQLITE_DONE && !database_.Check(code);
  return false;
}

std::string_view SqliteStatement::Text(int column) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(handle_.get(), column));
  return {text ? text : "", static_cast<std::size_t>(sqlite3_column_bytes(handle_.get(), column))};
}

std::string_view SqliteStatement::Bytes(int column) {
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(handle_.get(), column));
  return {bytes ? bytes : "", static_cast<std::size_t>(sqlite3_column_bytes(handle_.get(), column))};
}

}  // namespace tellurix
