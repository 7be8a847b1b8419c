#!/usr/bin/env bash
# Installs what the build needs on Debian 12, as root or through sudo.
#
#   tools/install_dependencies.sh          library and examples
#   tools/install_dependencies.sh --tests  tests and benchmark, too
set -euo pipefail

packages=(g++ cmake ninja-build)
case "${1:-}" in
  "") ;;
  --tests)
    packages+=(binutils ccache clang gcc libbenchmark-dev libgmp-dev libgtest-dev libmpfr-dev
               libsleef-dev pkg-config python3 python3-mpmath
               # For the clients: compilers, and a runtime of OpenCL.
               clang-19 dpkg-dev file gfortran llvm-19 llvm-19-dev
               ocl-icd-libopencl1 ocl-icd-opencl-dev opencl-headers pocl-opencl-icd
               # Pictures of the measured tables.
               python3-matplotlib)
    ;;
  *)
    echo "usage: $0 [--tests]" >&2
    exit 2
    ;;
esac

as_root=()
if [[ $(id -u) -ne 0 ]]; then
  as_root=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -q
"${as_root[@]}" apt-get install -y -q --no-install-recommends "${packages[@]}"
