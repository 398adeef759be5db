#!/usr/bin/env bash
# The installed library as an application meets it: installs the build into a fresh prefix,
# then builds the examples against that prefix alone, the three ways the README shows (the
# CMake package, the pkg-config file through CMake, the pkg-config file on a compiler line),
# and runs what it built.
#
#     installedExamples.sh SOURCE_DIR BUILD_DIR CXX
set -euo pipefail
source=$1
build=$2
cxx=$3
work=$build/installed-examples
prefix=$work/prefix
rm -rf "$work"
mkdir -p "$work"

step() { echo "== $*"; }

step "install into $prefix"
cmake --install "$build" --prefix "$prefix" > "$work/install.log"
pc=$(find "$prefix" -name zuSceneGraph.pc)
libdir=$(dirname "$(dirname "$pc")")
export PKG_CONFIG_PATH=$(dirname "$pc")

generator=()
command -v ninja > /dev/null && generator=(-G Ninja)
runExamples() {
    "$1/first_scene"
    local parts
    parts=$("$1/load_obj" "$source/examples/parts.obj")
    echo "$parts"
    grep -qx "3 of 5 parts visible" <<< "$parts"
}

step "examples with find_package(zuSceneGraph)"
cmake -S "$source/examples" -B "$work/package" "${generator[@]}" -DCMAKE_CXX_COMPILER="$cxx" \
    -DCMAKE_PREFIX_PATH="$prefix" > "$work/package.log"
cmake --build "$work/package"
runExamples "$work/package"

step "examples with pkg_check_modules(zuSceneGraph)"
cmake -S "$source/examples" -B "$work/pkgconfig" "${generator[@]}" -DCMAKE_CXX_COMPILER="$cxx" \
    -DZU_EXAMPLES_PKGCONFIG=ON > "$work/pkgconfig.log"
cmake --build "$work/pkgconfig"
runExamples "$work/pkgconfig"

# No -std option of our own: the pkg-config file carries the standard.
step "first_scene with $cxx \$(pkg-config --cflags --libs zuSceneGraph)"
# shellcheck disable=SC2046
"$cxx" -o "$work/first_scene" "$source/examples/first_scene.cpp" $(pkg-config --cflags --libs zuSceneGraph) \
    -Wl,-rpath,"$libdir"
"$work/first_scene"
