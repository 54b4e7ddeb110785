# The arguments of bench/SpeedSummary.cpp in R 4.2 or later: prints the name of each benchmark, a tab, milliseconds.
x <- exp((seq_len(1e6) * 0.6180339887498949) %% 1)

source(file.path(Sys.getenv("PEERS"), "common", "measure.R"))

peer("MillionFullSummary", {
  mean(x)
  sd(x)
  quantile(x, c(0, 0.05, 0.25, 0.5, 0.75, 0.95, 1), type = 2)
})
