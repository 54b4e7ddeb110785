# The work of bench/SpeedMatrix.cpp in R.
source(file.path(Sys.getenv("PEERS"), "common", "measure.R"))

set.seed(1)
n <- 1e6
x <- rnorm(n)
peer("RankMillion", rank(x))
peer("SortMillion", sort(x))
records <- data.frame(time = x, weight = 1, event = 0L)
peer("SortMillionRecords", records[order(records$time), ])

design <- cbind(1, matrix(rnorm(20 * n), n))
y <- rnorm(n)
peer("FitMillion/WellConditioned", lm.fit(design, y))

table <- matrix(c(7, 4, 5, 3, 6, 4, 9, 3, 5, 4, 6, 3, 8, 4, 5, 5, 5, 3, 9, 4, 4, 5, 6, 4, 5), 5)
peer("ExactTestOfFiveByFive", fisher.test(table, workspace = 4e8), rounds = 1)
