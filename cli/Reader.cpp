// tellurix-reader IN OUT: reads a workbook of another program and writes it as one of ours, for those who do not want
// to risk the reading themselves. 0 when it is done; 1 with the reason on standard output.

#include <cstdio>
#include <exception>
#include <string>

#include "workbook/files/NativeWorkbook.h"
#include "workbook/files/foreign/ForeignWorkbook.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: tellurix-reader IN OUT\n", stderr);
    return 2;
  }
  std::string problem;
  try {
    tellurix::Workbook workbook;
    if (tellurix::ReadForeignWorkbook(argv[1], workbook, problem) &&
        tellurix::WriteNativeWorkbook(workbook, argv[2], problem))
      return 0;
  } catch (const std::exception&) {  // want of memory
    problem = "The file is damaged.";
  }
  std::fputs(problem.c_str(), stdout);
  return 1;
}
