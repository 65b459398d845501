#!/usr/bin/env bash
# install.sh BUILD_FOLDER PREFIX: installs, then moves the tree, since a package must not remember where it was put.
set -eu
rm -rf "$2" "$2.first"
cmake --install "$1" --prefix "$2.first" >/dev/null
mv "$2.first" "$2"
