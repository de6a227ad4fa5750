#!/usr/bin/env bash
# Installs the build tree into a scratch prefix and uses it as a downstream
# project would: SONAME, the installed command, a C program built through the
# CMake package and through pkg-config.
#
# The package's own files are checked too: the licence, the manual page, and one
# version everywhere (header, library, pkg-config, CMake package, command).
#
# consumer_test.sh CMAKE BUILD_DIR WORK_DIR LIBDIR C_COMPILER GENERATOR SOURCE_DIR VERSION SANITIZE
#                  TOOLS
set -euo pipefail

cmake_cmd=$1 build_dir=$2 work=$3 libdir=$4 cc=$5 generator=$6 source_dir=$7 version=$8
sanitize=$9 tools=${10}
repo=$(cd "$source_dir/../.." && pwd)

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

step "version: header, project, library file names"
header_version=
for part in MAJOR MINOR PATCH; do
    n=$(sed -n "s/^#define CYCBCR_VERSION_$part \([0-9][0-9]*\)\$/\1/p" "$prefix/include/cycbcr.h")
    [[ $n =~ ^[0-9]+$ ]] || fail "installed cycbcr.h has no CYCBCR_VERSION_$part number"
    header_version+=${header_version:+.}$n
done
major=${header_version%%.*}
[[ $header_version == "$version" ]] ||
    fail "installed header says $header_version, the build's project version is $version"
[[ -e $prefix/$libdir/libcycbcr.so.$header_version ]] ||
    fail "no libcycbcr.so.$header_version installed"

step "SONAME"
soname=$(readelf -d "$lib" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
[[ $soname == "libcycbcr.so.$major" ]] || fail "SONAME is '$soname', expected libcycbcr.so.$major"
[[ $major == 1 ]] || fail "version $header_version: the tests below expect libcycbcr.so.1"

step "licence"
licence=$prefix/share/doc/cycbcr/LICENSE
[[ -f $licence ]] || fail "not installed: share/doc/cycbcr/LICENSE"
cmp -s "$licence" "$repo/LICENSE" || fail "installed LICENSE differs from the repository's"
grep -q '^MIT License$' "$licence" || fail "LICENSE is not the MIT licence"
grep -q '^Copyright (c) 2026 the libcycbcr authors$' "$licence" ||
    fail "LICENSE lacks the copyright line"

if [[ $tools == ON ]]; then
    step "manual page"
    page=$prefix/share/man/man1/cycbcr.1
    [[ -f $page ]] || fail "not installed: share/man/man1/cycbcr.1"
    grep -q "^\.TH CYCBCR 1 .*\"cycbcr $header_version\"" "$page" ||
        fail "cycbcr.1 does not carry version $header_version: $(grep '^\.TH' "$page")"
    grep -q '@[A-Z_]*@' "$page" && fail "cycbcr.1 has an unfilled @VARIABLE@"
    if command -v groff >/dev/null 2>&1; then
        # -ww: every warning; -z: format only. Any warning is a fault of the page.
        warnings=$(groff -man -Tutf8 -ww -z "$page" 2>&1)
        [[ -z $warnings ]] || fail "groff warns about cycbcr.1:"$'\n'"$warnings"
        text=$(groff -man -Tutf8 "$page" 2>/dev/null)
        grep -q 'cycbcr - convert' <<<"$text" || fail "cycbcr.1 shows no NAME line"
    else
        echo "groff not found: the page's roff is not checked"
    fi

    step "installed cycbcr command: version"
    [[ -x $prefix/bin/cycbcr ]] || fail "not installed: bin/cycbcr"
    said=$(env -u LD_LIBRARY_PATH "$prefix/bin/cycbcr" --version)
    [[ $said == "cycbcr $header_version" ]] ||
        fail "cycbcr --version says '$said', expected 'cycbcr $header_version'"
elif [[ -e $prefix/bin/cycbcr || -e $prefix/share/man/man1/cycbcr.1 ]]; then
    fail "built without the command, yet the command or its page is installed"
fi

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
    -DEXPECTED_VERSION="$header_version" \
    -DCONSUMER_SOURCE="$source_dir/consumer.c" >"$work/cmake-consumer.log" 2>&1 ||
    { cat "$work/cmake-consumer.log"; fail "configuring the CMake consumer failed"; }
"$cmake_cmd" --build "$work/cmake-consumer" >>"$work/cmake-consumer.log" 2>&1 ||
    { cat "$work/cmake-consumer.log"; fail "building the CMake consumer failed"; }
# The build-tree RPATH CMake sets must lead to the installed library.
"${run[@]}" "$work/cmake-consumer/consumer" | tee "$work/cmake-consumer.out"
grep -qx "consumer: version $header_version" "$work/cmake-consumer.out" ||
    fail "the library loaded gives another version than $header_version"

step "C consumer through pkg-config"
export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
# The .pc file derives its prefix from where it lies, so the scratch install
# must work as it is, with no --define-variable.
pc=(pkg-config)
pc_libdir=$("${pc[@]}" --variable=libdir cycbcr)
[[ $(realpath "$pc_libdir") == $(realpath "$prefix/$libdir") ]] ||
    fail "pkg-config libdir '$pc_libdir' is not in the install prefix"
pc_version=$("${pc[@]}" --modversion cycbcr)
[[ $pc_version == "$header_version" ]] ||
    fail "pkg-config version '$pc_version', expected $header_version"
"${pc[@]}" --atleast-version="$header_version" cycbcr ||
    fail "pkg-config does not take cycbcr.pc as at least $header_version"
# shellcheck disable=SC2046
"$cc" -std=c11 -Wall -Wextra -pedantic -Werror -o "$work/consumer-pc" \
    $("${pc[@]}" --cflags cycbcr) "$source_dir/consumer.c" $("${pc[@]}" --libs cycbcr) \
    >"$work/pkg-config-consumer.log" 2>&1 ||
    { cat "$work/pkg-config-consumer.log"; fail "building with pkg-config flags failed"; }
"${run[@]}" LD_LIBRARY_PATH="$prefix/$libdir" "$work/consumer-pc"

echo "consumer test: all checks passed"
