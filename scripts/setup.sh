#!/usr/bin/env bash
# setup.sh [PACKAGE...]   installs the Debian 12 packages that the build, the tests and the demo need, and those given.
## Needs root only when something is missing. Starts no service.
set -euo pipefail

packages=("$@" g++ cmake ninja-build libasio-dev libwxgtk3.2-dev libgtk-3-dev pkgconf libgtest-dev libgmock-dev zlib1g-dev
  nettle-dev libssl-dev libcurl4-openssl-dev ca-certificates python3-minimal python3-pyftpdlib python3-openssl diffutils iproute2)
# A virtual display for the window tests, with a window manager, a notification area, and a tool that clicks and types.
packages+=(xvfb xauth openbox trayer xdotool x11-utils)
# Other archive programs, which must be able to read our archives.
packages+=(unzip p7zip-full libarchive-tools)
# Libraries of the FTP daemons and proxies that tests/servers/*.sh download and unpack for the tests.
packages+=(openssl libacl1 libcap2 libcrypt1 libhiredis0.14 libidn2-0 libmemcached11 libmemcachedutil2 libpam0g
  libldap-2.5-0 libpcre2-posix3 libsodium23 libssl3 libwrap0)

missing=()
installed=$(dpkg-query -W -f='${db:Status-Abbrev}${Package}\n' "${packages[@]}" 2>/dev/null || true)
for package in "${packages[@]}"; do
  grep -qxF "ii $package" <<<"$installed" || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "setup: installing ${missing[*]}"
as_root=()
if [ "$(id -u)" != 0 ]; then
  command -v sudo >/dev/null || { echo "setup: these packages are missing, and there is neither root nor sudo to install them: ${missing[*]}" >&2; exit 1; }
  as_root=(sudo)
fi
# Debian's way to keep services from starting when they are installed.
policy=/usr/sbin/policy-rc.d
if [ ! -e "$policy" ]; then
  printf '#!/bin/sh\nexit 101\n' | "${as_root[@]}" tee "$policy" >/dev/null
  "${as_root[@]}" chmod +x "$policy"
  trap '"${as_root[@]}" rm -f "$policy"' EXIT
fi
log=$(mktemp)
install_all() {
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -qq &&
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
}
if ! install_all >"$log" 2>&1; then
  cat "$log" >&2
  rm -f "$log"
  exit 1
fi
rm -f "$log"
