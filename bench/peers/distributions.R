# R's own functions on as many arguments, drawn from the same ranges, as in bench/SpeedDistributions.cpp. Where ours
# answers several figures in one call, R's functions for each of them stand beside one another.
source(file.path(Sys.getenv("PEERS"), "common", "measure.R"))
set.seed(7)
n <- 1e6

x <- log_between(0.01, 1e4, n)
peer("MillionAlogam", lgamma(x))

x <- runif(n, -0.9, 1.1)
peer("MillionDlnrel", log1p(x))

p <- runif(n)
df <- log_between(0.5, 1e4, n)
peer("MillionPpchi2", qchisq(p, df), rounds = 3)

dfd <- log_between(1, 1e4, n)
dfn <- log_between(1, 1e4, n)
p <- log_between(1e-6, 0.5, n)
peer("MillionFfromp", qf(p, dfn, dfd, lower.tail = FALSE), rounds = 2)

mean <- log_between(1, 1e4, n)
k <- pmax(0, round(mean + runif(n, -4, 4) * sqrt(mean)))
peer("MillionPoisson", {
  ppois(k - 1, mean, lower.tail = FALSE)
  ppois(k, mean)
  dpois(k, mean)
}, rounds = 3)

k <- ceiling(log_between(0.5, 1e4, n / 10))
p <- runif(n / 10)
peer("HundredThousandPoissoni", {
  mean <- qgamma(p, k)
  ppois(k - 1, mean, lower.tail = FALSE)
  ppois(k, mean)
  dpois(k, mean)
})

size <- round(log_between(10, 1e4, n))
p <- runif(n)
k <- pmin(size, pmax(0, round(size * p + runif(n, -4, 4) * sqrt(size * p * (1 - p)))))
peer("MillionBino", {
  dbinom(k, size, p)
  pbinom(k, size, p)
  pbinom(k - 1, size, p, lower.tail = FALSE)
}, rounds = 3)

few <- 1:1000
peer("ThousandBino2", for (i in few) binom.test(k[i], size[i], p[i]), rounds = 3)

n <- 1e5
delta <- runif(n, -10, 10)
t <- delta + runif(n, -4, 4)
df <- log_between(1, 1e4, n)
peer("HundredThousandPnct", suppressWarnings(pt(t, df, delta)), rounds = 3)

few <- 1:1e4
p <- runif(1e4, 0.001, 0.999)
peer("TenThousandTnct", suppressWarnings(qt(p, df[few], delta[few])), rounds = 2)

df <- log_between(1, 100, n)
lambda <- log_between(0.1, 1000, n)
x <- pmax(0.01, df + lambda + runif(n, -4, 4) * sqrt(2 * df + 4 * lambda))
peer("HundredThousandNchi2", pchisq(x, df, lambda), rounds = 3)
