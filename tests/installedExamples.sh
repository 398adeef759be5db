#!/usr/bin/env bash
# The installed library as an application meets it: installs the build into a fresh prefix,
# then builds against that prefix alone, and runs, the examples (through the CMake package,
# through the pkg-config file from CMake, and on a compiler line with pkg-config) and the
# README's first program (its CMakeLists.txt and main.cpp, taken from the README).
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

step "the README's first program"
readmeBlock() {  # the fenced block after the line <!-- readme-check: NAME -->
    awk -v name="$1" '
        $0 == "<!-- readme-check: " name " -->" { wanted = 1; next }
        wanted && /^```/ { if (inside) exit; inside = 1; next }
        inside { print }' "$source/README.md"
}
mkdir -p "$work/readme"
readmeBlock CMakeLists.txt > "$work/readme/CMakeLists.txt"
readmeBlock main.cpp > "$work/readme/main.cpp"
cmake -S "$work/readme" -B "$work/readme/build" "${generator[@]}" -DCMAKE_CXX_COMPILER="$cxx" \
    -DCMAKE_PREFIX_PATH="$prefix" > "$work/readme.log"
cmake --build "$work/readme/build"
output=$(cd "$work/readme" && ./build/myapp)
echo "$output"
[ "$output" = "$(printf '1 of 2 meshes visible\n2 blocks read back')" ]
