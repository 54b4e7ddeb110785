# R's own functions on as many arguments, drawn from the same ranges, as in bench/SpeedKernel.cpp.
source(file.path(Sys.getenv("PEERS"), "common", "measure.R"))
set.seed(7)
n <- 1e6

x <- runif(n, -8, 8)
peer("MillionAlnorm", pnorm(x))

p <- runif(n)
peer("MillionGauinv", qnorm(p))

p <- log_between(1e-6, 0.5, n)
df <- log_between(1, 1e4, n)
peer("MillionTfromp", qt(p, df, lower.tail = FALSE))

for (most in c("100", "1000000")) {
  p <- log_between(0.5, as.numeric(most), n)
  q <- log_between(0.5, as.numeric(most), n)
  x <- plogis(log(p / q) + runif(n, -5, 5) * sqrt(1 / p + 1 / q))
  peer(paste0("MillionBetain/", most), pbeta(x, p, q))

  x <- p * exp(runif(n, -5, 5) / sqrt(p))
  peer(paste0("MillionGammad/", most), pgamma(x, p))
}
