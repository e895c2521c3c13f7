#!/usr/bin/env bash
# build.sh [LIBRARY...]   cross-builds the libraries that Debian does not provide for MinGW-w64, each from the recipe of the
# same name in this folder, and prints their folders, joined with ";". Libraries already in the cache are not rebuilt.
#
# The cache is outside the checkout (QUILLMOOR_CACHE, else ~/.cache/quillmoor) and has a folder for each library, named
# after its version and a digest of everything that affects the result: the recipe, its dependencies, the toolchain and the
# compiler. A new Debian revision of the same version does not cause a rebuild; remove the folder to get it.
#
# A recipe is a shell script that defines `version`, `needs` (the recipes it depends on) and `build`, which gets the sources
# of that version with `unpack`, or from where Debian installs them, and installs into $prefix.
set -euo pipefail
here=$(dirname "$(realpath "${BASH_SOURCE[0]}")")
cache=${QUILLMOOR_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/quillmoor}/windows
toolchain=$here/../toolchain.cmake
mkdir -p "$cache"

# unpack PACKAGE [SERIES]   unpacks Debian's sources of the package, with Debian's patches, into ./source: those of $version,
# or the newest whose version begins with SERIES.
unpack() {
  local package=$1 series=${2:-} list revision
  # A separate package index, so that the system's list of sources stays unchanged.
  local apt_source=(-o "Dir::Etc::SourceList=$work/apt/list" -o "Dir::Etc::SourceParts=$work/apt/parts"
    -o "Dir::State::Lists=$work/apt/lists" -o "Dir::Cache=$work/apt/cache" -o APT::Sandbox::User=root)
  if [ ! -e "$work/apt/list" ]; then
    mkdir -p "$work"/apt/{parts,lists/partial,cache/archives/partial}
    list=$(apt-get indextargets --format '$(ORIGIN) deb-src $(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages')
    sort -u <<<"$list" | sed -n 's/^Debian //p' >"$work/apt/list"
    apt-get "${apt_source[@]}" -qq update
  fi
  # A mirror may lack files of the newest revision; then an older revision is used.
  for revision in $(apt-cache "${apt_source[@]}" showsrc --only-source "$package" | sed -n 's/^Version: //p' | sort -rV); do
    case ${series:+$revision}/$revision in
      "$series".*/?* | /"$version"-* | /"$version"+*) ;;
      *) continue ;;
    esac
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
# make RECIPE   builds the library unless it is in the cache, and sets folder[RECIPE].
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
  # Not in a condition, where the shell would ignore failed commands.
  set +e
  (set -e; cd "$work/$recipe"; build) >"$work/$recipe.log" 2>&1
  local status=$?
  set -e
  if [ $status != 0 ]; then
    tail -n 40 "$work/$recipe.log" >&2
    echo "deps: $recipe failed" >&2
    return 1
  fi
  # Other folders of this library in the cache are out of date.
  rm -rf "$cache/$recipe"-[0-9]*
  mv "$prefix" "${folder[$recipe]}"
  echo "deps: $recipe built in $((SECONDS - started)) s" >&2
}

# In the same file system as the cache, so that a finished library appears there whole.
work=$(mktemp -d "$cache/building.XXXXXX")
trap 'rm -rf "$work"' EXIT
recipes=("$@")
[ $# != 0 ] || recipes=(asio googletest nettle openssl libpng curl wxwidgets)
for recipe in "${recipes[@]}"; do make "$recipe"; done
joined "${recipes[@]}"
echo
