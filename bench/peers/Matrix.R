# The work of bench/SpeedMatrix.cpp in R: prints "benchmark name<TAB>milliseconds", the least of a few runs.
least <- function(name, work, runs = 3) {
  times <- replicate(runs, system.time(work())[["elapsed"]])
  cat(name, "\t", 1000 * min(times), "\n", sep = "")
}

set.seed(1)
n <- 1e6
x <- rnorm(n)
least("RankMillion", function() rank(x))
least("SortMillion", function() sort(x))
records <- data.frame(time = x, weight = 1, event = 0L)
least("SortMillionRecords", function() records[order(records$time), ])

design <- cbind(1, matrix(rnorm(20 * n), n))
y <- rnorm(n)
least("FitMillion/WellConditioned", function() lm.fit(design, y))
