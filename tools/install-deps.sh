#!/usr/bin/env bash
# Makes sure the build and test tools are present; installs Debian's packages when run as root.
set -eu
missing=()
command -v cmake >/dev/null || missing+=(cmake)
command -v g++ >/dev/null || missing+=(g++)
[ -e /usr/include/gtest/gtest.h ] || missing+=(libgtest-dev)
# zlib makes the tests' gzip samples; the programs decode gzip with ISA-L, bzip2, xz and zstd
# with their own libraries, found through pkg-config.
[ -e /usr/include/zlib.h ] || missing+=(zlib1g-dev)
command -v pkg-config >/dev/null || missing+=(pkgconf)
[ -e /usr/include/isa-l/igzip_lib.h ] || missing+=(libisal-dev)
[ -e /usr/include/bzlib.h ] || missing+=(libbz2-dev)
[ -e /usr/include/lzma.h ] || missing+=(liblzma-dev)
[ -e /usr/include/zstd.h ] || missing+=(libzstd-dev)
# genefind's command line parser (header only).
[ -e /usr/include/CLI/CLI.hpp ] || missing+=(libcli11-dev)
# `make package` (CI's make test-package): with dpkg-shlibdeps there, CMakeLists.txt has CPack work
# out the package's dependencies, and CPack then stops without the file utility. cpack itself comes
# with cmake, and dpkg-deb with dpkg, which every Debian system has.
if command -v dpkg-shlibdeps >/dev/null; then command -v file >/dev/null || missing+=(file); fi
[ ${#missing[@]} -eq 0 ] && exit 0
if [ "$(id -u)" -ne 0 ]; then
  echo "missing: ${missing[*]}; install them with: sudo apt-get install ${missing[*]}" >&2
  exit 1
fi
echo "installing ${missing[*]}"
apt-get update -qq
DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
