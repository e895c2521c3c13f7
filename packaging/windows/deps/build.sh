#!/usr/bin/env bash
# build.sh [LIBRARY...]   cross-builds the libraries that Debian does not ship for MinGW-w64, each from the recipe of its
# name beside this file, and prints their folders, joined with ";". What is in the cache already is not built again.
#
# The cache lies outside the checkout (QUILLMOOR_CACHE, else ~/.cache/quillmoor) with a folder for each library, named by
# its version and by a digest of all that shapes it: its recipe, what it is built on, the toolchain and the compiler. A new
# revision of the same version in Debian does not count; to take one up, remove the library's folder.
#
# A recipe is a file of shell text: `version`, `needs` (the recipes it builds on), and `build`, which gets the sources of
# that version with `unpack` or from where Debian installs them, and installs into $prefix.
set -euo pipefail
here=$(dirname "$(realpath "${BASH_SOURCE[0]}")")
cache=${QUILLMOOR_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/quillmoor}/windows
toolchain=$here/../toolchain.cmake
mkdir -p "$cache"

# unpack PACKAGE   unpacks Debian's sources of the package into ./source, with Debian's patches.
unpack() {
  local package=$1 list revision
  # A package index of our own, so that the system's list of sources stays as it is.
  local apt_source=(-o "Dir::Etc::SourceList=$work/apt/list" -o "Dir::Etc::SourceParts=$work/apt/parts"
    -o "Dir::State::Lists=$work/apt/lists" -o "Dir::Cache=$work/apt/cache" -o APT::Sandbox::User=root)
  if [ ! -e "$work/apt/list" ]; then
    mkdir -p "$work"/apt/{parts,lists/partial,cache/archives/partial}
    list=$(apt-get indextargets --format '$(ORIGIN) deb-src $(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages')
    sort -u <<<"$list" | sed -n 's/^Debian //p' >"$work/apt/list"
    apt-get "${apt_source[@]}" -qq update
  fi
  # A mirror may lack the newest revision's own files; then an older one of the same version serves.
  for revision in $(apt-cache "${apt_source[@]}" showsrc --only-source "$package" | sed -n 's/^Version: //p' | sort -rV); do
    case $revision in "$version"-* | "$version"+*) ;; *) continue ;; esac
    if apt-get "${apt_source[@]}" -qq source --download-only "$package=$revision"; then
      dpkg-source --no-check -x "${package}_${revision#*:}.dsc" source
      return
    fi
  done
  echo "deps: no complete sources of $package $version to be had" >&2
  return 1
}

# install_cmake SOURCE [OPTION...]   configures, builds and installs static libraries into $prefix.
install_cmake() {
  local source=$1
  shift
  cmake -S "$source" -B binary -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
    -DQUILLMOOR_WINDOWS_LIBRARIES="$(joined "${needs[@]}")" -DCMAKE_INSTALL_PREFIX="$prefix" -DBUILD_SHARED_LIBS=OFF "$@"
  cmake --build binary
  cmake --install binary
}

declare -A folder
joined() {
  local name text=
  for name in "$@"; do text+="${text:+;}${folder[$name]}"; done
  printf '%s' "$text"
}

compiler=$(x86_64-w64-mingw32-g++-posix --version | head -n 1)
# make RECIPE   sees to it that the library is in the cache and puts its place into folder[RECIPE].
make() {
  local recipe=$1 version needs=() need digest prefix started=$SECONDS
  [ -z "${folder[$recipe]:-}" ] || return 0
  # shellcheck source=/dev/null
  . "$here/$recipe"
  for need in "${needs[@]}"; do
    make "$need"
    # shellcheck source=/dev/null
    . "$here/$recipe"
  done
  digest=$({ cat "$here/$recipe" "$here/build.sh" "$toolchain"; printf '%s\n' "$compiler" "$(joined "${needs[@]}")"; } | sha256sum)
  folder[$recipe]=$cache/$recipe-$version-${digest:0:12}
  [ ! -d "${folder[$recipe]}" ] || return 0

  echo "deps: building $recipe $version" >&2
  prefix=$work/$recipe/installed
  mkdir -p "$prefix"
  # Not as a condition: there the shell would go on after a failed command.
  set +e
  (set -e; cd "$work/$recipe"; build) >"$work/$recipe.log" 2>&1
  local status=$?
  set -e
  if [ $status != 0 ]; then
    tail -n 40 "$work/$recipe.log" >&2
    echo "deps: $recipe failed" >&2
    return 1
  fi
  # What else lay in the cache under this name is out of date.
  rm -rf "$cache/$recipe"-[0-9]*
  mv "$prefix" "${folder[$recipe]}"
  echo "deps: $recipe built in $((SECONDS - started)) s" >&2
}

# Beside the cache, so that a finished library is moved into it and never stands there in part.
work=$(mktemp -d "$cache/building.XXXXXX")
trap 'rm -rf "$work"' EXIT
recipes=("$@")
[ $# != 0 ] || recipes=(asio googletest nettle libpng curl wxwidgets)
for recipe in "${recipes[@]}"; do make "$recipe"; done
joined "${recipes[@]}"
echo
