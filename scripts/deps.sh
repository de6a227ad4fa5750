#!/usr/bin/env bash
# Installs the Debian packages that building, testing and benchmarking need,
# when any is missing. Safe to run again: it does nothing when all are there.
set -euo pipefail

packages=(
    cmake ninja-build g++ pkgconf binutils python3
    libgtest-dev libgmock-dev libbenchmark-dev
    clang libclang-rt-14-dev
    libyuv-dev libavcodec-dev libavutil-dev libswscale-dev
    libpng-dev
)

if ! command -v dpkg-query >/dev/null 2>&1; then
    echo "deps: not a Debian system; install by hand: ${packages[*]}" >&2
    exit 0
fi

missing=()
for p in "${packages[@]}"; do
    status=$(dpkg-query -W -f='${db:Status-Status}' "$p" 2>/dev/null || true)
    [[ $status == installed ]] || missing+=("$p")
done
if [[ ${#missing[@]} -eq 0 ]]; then
    exit 0
fi

echo "deps: installing ${missing[*]}"
as_root=()
if [[ $(id -u) -ne 0 ]]; then
    if ! command -v sudo >/dev/null 2>&1; then
        echo "deps: need root (or sudo) to install: ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
fi
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -q
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -q --no-install-recommends "${missing[@]}"
