#!/usr/bin/env bash
# Installs the Debian packages the builds and tests need, when they are missing.
set -euo pipefail

packages=(cmake ninja-build g++ gcc ccache googletest libbenchmark-dev g++-powerpc-linux-gnu gcc-powerpc-linux-gnu
          qemu-user-static libc-bin
          dpkg-dev pkgconf  # the Debian packages' dependencies, and the consumer builds
          libopenblas-dev   # OpenBLAS: the MATMUL benchmark's peer, never linked into the library
          clang libclang-rt-14-dev  # the libFuzzer harnesses
          gfortran)         # the peer of benchmarks and the oracle of the formatted-output test
missing=()
for package in "${packages[@]}"; do
  dpkg -s "$package" >/dev/null 2>&1 || missing+=("$package")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  sudo_cmd=""
  [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
  $sudo_cmd apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -qq "${missing[@]}" >/dev/null
fi
