#!/usr/bin/env bash
# Installs the build tree into a scratch prefix and uses it as a downstream
# project would: SONAME, the installed command, a C program built through the
# CMake package and through pkg-config.
#
# consumer_test.sh CMAKE BUILD_DIR WORK_DIR LIBDIR C_COMPILER GENERATOR SOURCE_DIR VERSION SANITIZE
set -euo pipefail

cmake_cmd=$1 build_dir=$2 work=$3 libdir=$4 cc=$5 generator=$6 source_dir=$7 version=$8
sanitize=$9

fail() {
    echo "consumer test: $*" >&2
    exit 1
}
step() { echo "== $*"; }

rm -rf "$work"
mkdir -p "$work"
prefix=$work/prefix

step "install into $prefix"
"$cmake_cmd" --install "$build_dir" --prefix "$prefix" >"$work/install.log" ||
    { cat "$work/install.log"; fail "cmake --install failed"; }

lib=$prefix/$libdir/libcycbcr.so.1
for f in "$lib" "$prefix/$libdir/libcycbcr.so" "$prefix/include/cycbcr.h" \
    "$prefix/$libdir/pkgconfig/cycbcr.pc" "$prefix/$libdir/cmake/cycbcr/cycbcrConfig.cmake"; do
    [[ -e $f ]] || fail "not installed: ${f#"$prefix"/}"
done

step "SONAME"
soname=$(readelf -d "$lib" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
[[ $soname == libcycbcr.so.1 ]] || fail "SONAME is '$soname', expected libcycbcr.so.1"

if [[ -x $prefix/bin/cycbcr ]]; then
    step "installed cycbcr command finds its library"
    resolved=$(env -u LD_LIBRARY_PATH ldd "$prefix/bin/cycbcr" | sed -n 's/.*libcycbcr\.so\.1 => \([^ ]*\).*/\1/p')
    [[ $(realpath "$resolved") == $(realpath "$lib") ]] ||
        fail "installed command loads '$resolved' instead of $lib"
    env -u LD_LIBRARY_PATH "$prefix/bin/cycbcr" convert --from UYVY --to YUY2 --size 64x4
fi

# How to start the C programs: a library built with AddressSanitizer needs its
# runtime loaded ahead of everything else, which a plain program does not do.
run=(env -u LD_LIBRARY_PATH)
if [[ $sanitize == ON ]]; then
    asan=$("$cc" -print-file-name=libasan.so)
    if [[ $asan != /* ]]; then
        echo "sanitizer build without a loadable libasan.so: C consumers skipped"
        exit 77
    fi
    run+=(LD_PRELOAD="$asan")
fi

step "C consumer through find_package(cycbcr)"
"$cmake_cmd" -S "$source_dir/project" -B "$work/cmake-consumer" -G "$generator" \
    -DCMAKE_C_COMPILER="$cc" -DCMAKE_PREFIX_PATH="$prefix" -DEXPECTED_PREFIX="$prefix" \
    -DCONSUMER_SOURCE="$source_dir/consumer.c" >"$work/cmake-consumer.log" 2>&1 ||
    { cat "$work/cmake-consumer.log"; fail "configuring the CMake consumer failed"; }
"$cmake_cmd" --build "$work/cmake-consumer" >>"$work/cmake-consumer.log" 2>&1 ||
    { cat "$work/cmake-consumer.log"; fail "building the CMake consumer failed"; }
# The build-tree RPATH CMake sets must lead to the installed library.
"${run[@]}" "$work/cmake-consumer/consumer"

step "C consumer through pkg-config"
export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
# The .pc file derives its prefix from where it lies, so the scratch install
# must work as it is, with no --define-variable.
pc=(pkg-config)
pc_libdir=$("${pc[@]}" --variable=libdir cycbcr)
[[ $(realpath "$pc_libdir") == $(realpath "$prefix/$libdir") ]] ||
    fail "pkg-config libdir '$pc_libdir' is not in the install prefix"
pc_version=$("${pc[@]}" --modversion cycbcr)
[[ $pc_version == "$version" ]] || fail "pkg-config version '$pc_version', expected $version"
# shellcheck disable=SC2046
"$cc" -std=c11 -Wall -Wextra -pedantic -Werror -o "$work/consumer-pc" \
    $("${pc[@]}" --cflags cycbcr) "$source_dir/consumer.c" $("${pc[@]}" --libs cycbcr) \
    >"$work/pkg-config-consumer.log" 2>&1 ||
    { cat "$work/pkg-config-consumer.log"; fail "building with pkg-config flags failed"; }
"${run[@]}" LD_LIBRARY_PATH="$prefix/$libdir" "$work/consumer-pc"

echo "consumer test: all checks passed"
