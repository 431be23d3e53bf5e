#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the benchmarks need.
# Idempotent: when every package is present it only checks and exits.
# Runs as root, or through sudo otherwise.
set -euo pipefail

packages=(
  build-essential cmake pkg-config
  qtbase5-dev libgdal-dev libproj-dev libeigen3-dev libcgal-dev
  libgmp-dev libmpfr-dev   # exact arithmetic of CGAL's predicates
  libboost-dev        # small vectors in the mesher's conflict zones
  libgtest-dev libgmock-dev libbenchmark-dev
  libsegyio-dev
  libcli11-dev        # the command line of kfaults
  fonts-dejavu-core   # the text of the report pictures
  # The desktop application and its tests: OpenGL views, an X server for headless runs
  # and Mesa's software rendering.
  libqt5opengl5-dev libglu1-mesa-dev libgl1-mesa-dri
  xvfb xauth
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

if [ "$(id -u)" -eq 0 ]; then
  run=()
elif command -v sudo >/dev/null 2>&1; then
  run=(sudo)
else
  echo "install-deps: missing packages (${missing[*]}) and no root rights to install them" >&2
  exit 1
fi

echo "install-deps: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${run[@]}" apt-get update -qq
"${run[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
