#!/usr/bin/env bash
# exports.sh LIBRARY LIST: the library exports exactly the names of the list, each as the default of QMML_1.
set -eu -o pipefail
export LC_ALL=C
diff <(grep '^[A-Za-z_]' "$2" | sed 's/$/@@QMML_1/' | sort) \
    <(nm -D --defined-only --with-symbol-versions "$1" | awk '$2 != "A" { print $3 }' | sort)
