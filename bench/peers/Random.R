# R's own generators with the counts and parameters of bench/SpeedRandom.cpp, on the Mersenne Twister and inversion too.
# One line a benchmark: its name in our tables, a tab, the least processor time of several in milliseconds.
RNGkind("Mersenne-Twister", "Inversion")
set.seed(7)
n <- 1e6

deviates <- function(name, call) {
  expression <- substitute(call)
  once <- function() {
    used <- system.time(eval(expression, globalenv()), gcFirst = TRUE)
    1000 * (used[["user.self"]] + used[["sys.self"]])
  }
  cat(name, "\t", min(replicate(7, once())), "\n", sep = "")
}

deviates("RandomUniform", runif(n))
deviates("RandomUniformAB", runif(n, 2, 5))
deviates("RandomCauchy", rcauchy(n))
deviates("RandomLogistic", rlogis(n))
deviates("RandomWeibull", rweibull(n, 1.5, 2))
deviates("RandomNormal", rnorm(n))
deviates("RandomLognormal", rlnorm(n, log(2), log(3)))
deviates("RandomExponential", rexp(n))
deviates("RandomGamma/5", rgamma(n, 0.5))
deviates("RandomGamma/20", rgamma(n, 2))
deviates("RandomGamma/80", rgamma(n, 8))
deviates("RandomGamma/1000", rgamma(n, 100))
deviates("RandomChiSquare", rchisq(n, 5))
deviates("RandomF", rf(n, 5, 12))
deviates("RandomT", rt(n, 5))
deviates("RandomBeta/20/30", rbeta(n, 2, 3))
deviates("RandomBeta/400/900", rbeta(n, 40, 90))
deviates("RandomBeta/5/5", rbeta(n, 0.5, 0.5))
deviates("RandomBeta/300/8", rbeta(n, 30, 0.8))
deviates("RandomBinomial/10/3", rbinom(n, 10, 0.3))
deviates("RandomBinomial/100/2", rbinom(n, 100, 0.2))
deviates("RandomBinomial/100/4", rbinom(n, 100, 0.4))
deviates("RandomBinomial/20000/3", rbinom(n, 20000, 0.3))
deviates("RandomPoisson/7", rpois(n, 0.7))
deviates("RandomPoisson/80", rpois(n, 8))
deviates("RandomPoisson/120", rpois(n, 12))
deviates("RandomPoisson/1000", rpois(n, 100))
deviates("RandomPoisson/1000000", rpois(n, 1e5))
deviates("RandomNegativeBinomial", rnbinom(n, 2.5, 0.4))
deviates("RandomGeometric", rgeom(n, 0.2))
