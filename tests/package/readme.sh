#!/usr/bin/env bash
# readme.sh SOURCE_FOLDER LIBRARY_FOLDER WORK_FOLDER C_COMPILER CXX_COMPILER: the programs in the README and the guides
# build and run.
set -eu
source=$1 cc=$4 cxx=$5
mkdir -p "$3"
cd "$3"
export LD_LIBRARY_PATH=$2

program() { sed -n "/^\`\`\`$1\$/,/^\`\`\`\$/p" "$source/$2" | sed '/^```/d'; }
output_c() {
    program c "$1" >program.c
    "$cc" -std=c11 -Wall -Wextra -Werror -I "$source/include" program.c -L "$LD_LIBRARY_PATH" -lqmml -o program_c
    ./program_c
}
output_cpp() {
    program cpp "$1" >program.cpp
    "$cxx" -std=c++17 -Wall -Wextra -Werror -I "$source/include" program.cpp -L "$LD_LIBRARY_PATH" -lqmml -o program_cpp
    ./program_cpp
}
output_python() {
    program python "$1" >program.py
    python3 program.py
}
expect() { grep -Fx -- "$1" <<<"$2" >/dev/null || { printf 'FAILED: expected "%s" in "%s"\n' "$1" "$2"; exit 1; }; }

expect "3 cases: 22.1 23.2 27.5" "$(output_c README.md)"
output=$(output_cpp README.md)
expect "0.024998" "$output"
expect "4: Identifiant inconnu" "$output"
expect "x = (1.25, 1.5)" "$(output_c docs/matrices.md)"
output=$(output_cpp docs/matrices.md)
expect "3.414214" "$output"
expect "3 of 3 are positive" "$output"
if command -v python3 >/dev/null; then
    # 0.961724 and 2.262157 are the tabled values; the lower tail comes from an engine of six digits.
    output_python README.md | awk 'NR == 1 { ok = $1 > 0.96171 && $1 < 0.96173 }
        NR == 2 { ok = ok && $1 > 2.2621 && $1 < 2.2622 } END { exit !(ok && NR == 2) }'
    expect "['1.000', '0.968', '-0.073']" "$(output_python docs/matrices.md)"
fi
