# Tests and lowess in R, on the data of stattest_bench.cpp; run by peers_stattest.py.
# usage: Rscript peers_stattest.R [part of a workload's name]
# Prints one line per workload: name, nanoseconds per call, statistic.
part <- c(commandArgs(trailingOnly = TRUE), "")[1]

bells <- function(n, seed) {
  state <- seed
  u <- numeric(4 * n)
  for (i in seq_along(u)) {
    state <- (16807 * state) %% 2147483647
    u[i] <- state / 2147483647
  }
  i <- 4 * (0:(n - 1))
  u[i + 1] + u[i + 2] + u[i + 3] + u[i + 4] - 2
}

measure <- function(name, call) {
  if (!grepl(part, paste0(name, "/r"), fixed = TRUE)) return(invisible())
  statistic <- unname(call())
  runs <- 1
  repeat {
    spent <- system.time(for (i in seq_len(runs)) call())[["user.self"]]
    if (spent > 0.05) break
    runs <- 2 * runs
  }
  times <- replicate(5, system.time(for (i in seq_len(runs)) call())[["user.self"]] / runs)
  cat(sprintf("%s %.1f %.17g\n", name, median(times) * 1e9, statistic))
}

for (n in c(50, 500, 5000)) local({
  x <- bells(n, n)
  measure(paste0("ks_normal_n", n), function() ks.test(x, "pnorm", 0, 0.6, exact = FALSE)$statistic)
  measure(paste0("shapiro_wilk_n", n), function() shapiro.test(x)$statistic)
})
if (any(grepl(part, paste0(c("anova_1e6", "simple_correlation_1e6", "kruskal_wallis_1e6"), "/r"), fixed = TRUE))) {
  x <- bells(1e6, 7)
  y <- bells(1e6, 8) + 0.5 * x
  group <- factor(rep(0:3, each = 250000))
  measure("anova_1e6", function() oneway.test(x ~ group, var.equal = TRUE)$statistic)
  measure("simple_correlation_1e6", function() cor.test(x, y)$estimate)
  measure("kruskal_wallis_1e6", function() kruskal.test(x, group)$statistic)
}
for (n in c(200, 4000)) local({
  x <- sort(bells(n, 11))
  y <- bells(n, 12) + sin(2 * x)
  for (percent in 0:1) {
    delta <- 0.01 * percent * (x[n] - x[1])
    measure(sprintf("lowess_n%d_delta%d", n, percent),
            function() lowess(x, y, f = 2 / 3, iter = 3, delta = delta)$y[n %/% 2 + 1])
  }
})
