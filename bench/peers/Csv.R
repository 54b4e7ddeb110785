# The work of bench/SpeedCsv.cpp in R, with fread of data.table on the same file: prints "benchmark name<TAB>
# milliseconds", the least of several runs, with as many threads as it takes by itself.
suppressMessages(library(data.table))

file <- file.path(dirname(tempdir()), "tellurix-bench-million.csv")
if (!file.exists(file)) {
  set.seed(1)
  fwrite(as.data.table(lapply(1:5, function(column) runif(1e6))), file)
}
times <- replicate(5, system.time(fread(file))[["elapsed"]])
cat("CsvRead\t", 1000 * min(times), "\n", sep = "")
