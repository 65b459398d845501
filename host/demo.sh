#!/usr/bin/env bash
# Formulas and statistics over the two data sets, with results to look at. Usage: host/demo.sh QMML_BINARY [OUTPUT_FOLDER]
set -euo pipefail

qmml=${1:?usage: host/demo.sh QMML_BINARY [OUTPUT_FOLDER]}
root=$(cd "$(dirname "$0")/.." && pwd)
out=${2:-$root/build/demo}
data=$root/data
mkdir -p "$out"

title() { printf '\n== %s\n' "$*"; }

# The command as a user would type it, then its work.
run()
{
    local words="" word
    for word in "$@"; do
        case $word in
            *[!A-Za-z0-9_.,/=-]*) words+=" '$word'" ;;
            *) words+=" ${word#"$root"/}" ;;
        esac
    done
    printf '$ qmml%s\n' "$words"
    "$qmml" "$@"
}

# The first rows of a CSV file (no quotes in it) in columns: an empty cell shows as "-", a long number rounded.
show()
{
    head -n "$(($2 + 1))" "$1" | awk -F, '
        { fields = NF > fields ? NF : fields
          for (i = 1; i <= NF; i++) { cell[NR, i] = $i == "" ? "-" : $i
              if (NR > 1 && length($i) > 8) cell[NR, i] = sprintf("%.6g", $i)
              if (length(cell[NR, i]) > width[i]) width[i] = length(cell[NR, i]) } }
        END { for (r = 1; r <= NR; r++) { line = "   "
                  for (i = 1; i <= fields; i++) line = line sprintf(" %*s", width[i] + 1, cell[r, i])
                  print line } }'
    printf '    ... %d rows, written to %s\n' "$(($(wc -l <"$1") - 1))" "$1"
}

title "Air quality in New York, 1973: temperature in degrees Celsius"
run eval 'Celsius = (x - 32) / 1.8' --data "$data/airquality.csv" --x Temp --output "$out/celsius.csv"
show "$out/celsius.csv" 5

title "Ozone against wind and sun; where a measurement is missing, so is the result"
run eval 'Load = log(x) - 0.5*log(z) + y/10' --data "$data/airquality.csv" --x Ozone --y Wind --z Solar.R \
    --output "$out/load.csv"
show "$out/load.csv" 7

title "How unusual a day's wind is: its place in a normal distribution"
run eval 'Place = inormal(x, 9.957516, 3.523001)' --data "$data/airquality.csv" --x Wind --output "$out/wind.csv"
show "$out/wind.csv" 5

title "Stopping distance of cars, in metres, beside what the square of the speed suggests"
run eval 'Metres = 0.3048 * y' --data "$data/cars.csv" --x speed --y dist --output "$out/metres.csv"
run eval 'Excess = y - (0.16*x)^2' --data "$out/metres.csv" --x speed --y Metres --output "$out/cars.csv"
show "$out/cars.csv" 5

title "Distributions"
run dist normal --cdf 1.96 --mu 0 --sigma 1
run dist student --quantile 0.025 0.975 --df 10
run dist binom --pdf 0 1 2 3 --p 0.5 --n 3 --csv

title "A mistake in a formula (exit code 2, nothing is written)"
run eval 'V1 = sqrt(x) + speed' --data "$data/cars.csv" --x speed --output "$out/never.csv" 2>&1 ||
    printf 'exit code %d\n' $?

title "Statistics of every column"
run describe "$data/airquality.csv"

title "Does the temperature depend on the month?"
run test anova "$data/airquality.csv" --value Temp --by Month --svg "$out/temp.svg"

title "Wind as a Weibull distribution"
run fit weibull "$data/airquality.csv" --column Wind --svg "$out/wind.svg"

title "Stopping distance, smoothed"
run lowess "$data/cars.csv" --x speed --y dist --output "$out/smooth.csv" --svg "$out/smooth.svg"
show "$out/smooth.csv" 5

title "All of it on one page"
run report "$data/airquality.csv" --output "$out/report.html"
printf 'Pictures: %s\n' "$out"/*.svg
printf 'Open in a browser: %s\n' "$out/report.html"
