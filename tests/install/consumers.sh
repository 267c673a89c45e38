#!/usr/bin/env bash
# Installs a build into a scratch folder, moves it, and builds and runs both consumers against it.
# usage: consumers.sh BUILD_DIRECTORY SOURCE_DIRECTORY
set -euo pipefail
build=$1
source=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build" --prefix "$scratch/first" >"$scratch/install.log"
mv "$scratch/first" "$scratch/prefix" # an installation that only works where it was put would fail from here on
cp -r "$source/examples/consumers" "$scratch/consumers"
pkgconfig=$(dirname "$(find "$scratch/prefix" -name nax.pc)")

expect() { # the output of a consumer
    local output
    output=$("$1")
    echo "$1: $output"
    [ "$output" = "sum 50, threads yes, mode 0x1a02" ]
}

unset NAX_ARQ_MODE
cmake -S "$scratch/consumers/cmake" -B "$scratch/cmake" -DCMAKE_PREFIX_PATH="$scratch/prefix" >"$scratch/cmake.log"
cmake --build "$scratch/cmake" >>"$scratch/cmake.log"
expect "$scratch/cmake/fill"

PKG_CONFIG_PATH=$pkgconfig make -s -C "$scratch/consumers/pkg-config"
expect "$scratch/consumers/pkg-config/fill"

# Each header stands alone, in C99 and in C++, without warnings.
for header in "$scratch"/prefix/include/nax/*.h; do
    for language in c99 c++20; do
        case $language in c99) compiler="cc -x c" ;; *) compiler="c++ -x c++" ;; esac
        echo "#include \"$header\"" |
            $compiler -std=$language -Wall -Wextra -pedantic -Werror -fsyntax-only -I"$scratch/prefix/include" - ||
            { echo "$header does not compile alone as $language"; exit 1; }
    done
done
