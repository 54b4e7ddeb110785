# What every peer script shares. A script prints one line a benchmark: its name in our tables, a tab, milliseconds.

# Prints the least processor time of `rounds` evaluations of the call.
peer <- function(name, call, rounds = 5) {
  expression <- substitute(call)
  where <- parent.frame()
  once <- function() {
    used <- system.time(eval(expression, where), gcFirst = TRUE)
    1000 * (used[["user.self"]] + used[["sys.self"]])
  }
  cat(name, "\t", min(replicate(rounds, once())), "\n", sep = "")
}

log_between <- function(low, high, n) low * (high / low)^runif(n)
