#!/usr/bin/env bash
# headers.sh INCLUDE_FOLDER COMPILER...: each header compiles alone, and twice, as C11 and as C++17 and C++20, with every
# compiler given and with those that happen to be there.
set -u
include=$1
shift
status=0

compile() { # COMPILER LANGUAGE STANDARD HEADER
    printf '#include <%s>\n#include <%s>\nint translation_unit_is_not_empty;\n' "$4" "$4" |
        "$1" -x "$2" -std="$3" -pedantic -Wall -Wextra -Werror -fsyntax-only -I "$include" - || {
        echo "FAILED: $4 as $3 with $1"
        status=1
    }
}

known=
for compiler in "$@" gcc g++ clang clang++; do
    path=$(command -v "$compiler") || continue
    path=$(readlink -f "$path")
    case " $known " in *" $path "*) continue ;; esac
    known="$known $path"
    for header in "$include"/qmml/*.h; do
        name=qmml/${header##*/}
        if [[ $compiler == *++* ]]; then
            compile "$compiler" c++ c++17 "$name"
            compile "$compiler" c++ c++20 "$name"
        else
            compile "$compiler" c c11 "$name"
        fi
    done
done
[[ -n $known ]] || status=1
exit $status
