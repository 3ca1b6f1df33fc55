#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need (with "demo", also those of the
# demos). Safe
# to run again: it asks apt only for what is missing.
set -euo pipefail

packages=(
  build-essential cmake ccache pkg-config git
  libprotobuf-dev protobuf-compiler libgrpc++-dev protobuf-compiler-grpc
  libfmt-dev libspdlog-dev libyaml-cpp-dev libcli11-dev nlohmann-json3-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  clang libclang-rt-dev
  iproute2
  # The kernel tests and the live demo run a static multicast routing daemon in a namespace.
  smcroute
)
# The demo draws the data plane with graphviz; the tests do not need it.
if [ "${1:-}" = demo ]; then packages+=(graphviz); fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
echo "Installing: ${missing[*]}"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
