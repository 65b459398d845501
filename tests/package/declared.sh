#!/usr/bin/env bash
# declared.sh SOURCE_FOLDER C_COMPILER: whatever is exported under a plain name can be used from C with the headers alone.
set -eu -o pipefail
{
    echo '#include <qmml/qmml.h>'
    echo 'typedef void (*any_function)(void);'
    echo 'extern const any_function all[];'
    echo 'const any_function all[] = {'
    grep '^[A-Za-z_]' "$1/exports.txt" | grep -v '^_Z' | sed 's/.*/    (any_function)&,/'
    echo '};'
} | "$2" -x c -std=c11 -Wall -Werror -fsyntax-only -I "$1/include" -
