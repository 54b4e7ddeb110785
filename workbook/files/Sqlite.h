// SQLite databases, with their handles looked after. Of every call that fails the reason stands in Problem.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace tellurix {

class SqliteStatement;

class SqliteDatabase {
 public:
  // For writing a new file that nobody else knows of yet: without locks and journal, syncing is the caller's.
  bool OpenNew(const std::filesystem::path& path);
  // For reading a file as it stands, whoever made it: nothing beside it is looked at, nothing in it is executed.
  bool OpenToRead(const std::filesystem::path& path);
  bool Run(const char* commands);
  int Number(const char* query);  // the first value; 0 when there is none
  bool Close();

  const std::string& Problem() const { return problem_; }

 private:
  friend class SqliteStatement;
  struct CloseHandle {
    void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
  };
  bool Open(const std::filesystem::path& path, const char* options, int flags);
  bool Check(int code);  // true for SQLITE_OK

  std::unique_ptr<sqlite3, CloseHandle> handle_;
  std::string problem_;
};

class SqliteStatement {
 public:
  SqliteStatement(SqliteDatabase& database, const char* text);

  // Parameters by number from 1; views must hold until Execute.
  SqliteStatement& Bind(int at, std::int64_t value);
  SqliteStatement& Bind(int at, int value) { return Bind(at, std::int64_t{value}); }
  SqliteStatement& Bind(int at, double value);
  SqliteStatement& Bind(int at, std::string_view text);
  SqliteStatement& BindBytes(int at, std::string_view bytes);
  bool Execute();  // runs to the end, and is ready for the next one

  bool Next();                          // to the next row; false at the end or on a failure
  bool Failed() const { return bad_; }  // also when the statement could not be made
  int ColumnCount() { return sqlite3_column_count(handle_.get()); }
  std::int64_t Integer(int column) { return sqlite3_column_int64(handle_.get(), column); }
  double Double(int column) { return sqlite3_column_double(handle_.get(), column); }
  std::string_view Text(int column);   // holds until the next row
  std::string_view Bytes(int column);  // as well

 private:
  struct Finalise {
    void operator()(sqlite3_stmt* handle) const { sqlite3_finalize(handle); }
  };
  SqliteDatabase& database_;
  std::unique_ptr<sqlite3_stmt, Finalise> handle_;
  bool bad_ = false;
};

}  // namespace tellurix
