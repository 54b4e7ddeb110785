# The arguments of bench/SpeedRanks.cpp in R 4.2 or later: prints the name of each benchmark, a tab, milliseconds.
spread <- function(n, irrational) (seq_len(n) * irrational) %% 1
first <- function(n) spread(n, 0.6180339887498949)
samples <- function(n) 2 + floor(49 * spread(n, 0.4142135623730951))
freedom <- function(n) 2 + floor(119 * spread(n, 0.7320508075688772))

# The least of five runs, by the time of the processor.
report <- function(name, run, times = 1) {
  best <- min(replicate(5, system.time(for (i in seq_len(times)) run())[["user.self"]]))
  cat(name, "\t", 1000 * best / times, "\n", sep = "")
}

suppressWarnings({
  report("TenThousandProbsr", function() {
    n <- 10000
    ptukey(1 + 6 * first(n), samples(n), freedom(n), lower.tail = FALSE)
  })
  report("ThousandQuantsr", function() {
    n <- 1000
    qtukey(0.001 + 0.5 * first(n), samples(n), freedom(n), lower.tail = FALSE)
  })
  rho <- function(n, T) for (t in T) .Call(stats:::C_pRho, t, n, FALSE)
  report("HundredPrhoOf9", function() rho(9, 2 * floor(120 * first(100))))
  report("HundredThousandPrhoSeries", function() rho(50, 2 * floor(20825 * first(100000))))
  report("HundredKendallOf40", function() {
    # In concordant pairs; R keeps its table for the values of one call, so one call a value.
    for (s in 2 * floor(390 * first(100)) - 390) .Call(stats:::C_pKendall, (780 + s) / 2 - 1, 40)
  })
  smirnov <- function(n1, n2) for (d in 0.02 + 0.3 * first(100)) psmirnov(d, c(n1, n2), lower.tail = FALSE)
  report("HundredKsp2", function() smirnov(300, 401))
  report("HundredKsp2OfEqualSizes", function() smirnov(400, 400))
  report("WmwpxOf30And80", function() pwilcox(1000, 30, 80))
})
