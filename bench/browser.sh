#!/usr/bin/env bash
# browser.sh [ENTRIES]   the remote browser, without its window, on a folder of so many files (20000), one of so many
# folders, and one of 500 links, of which every other leads to a folder.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
entries=${1:-20000}
scripts/build.sh linux BrowserBench >/dev/null
work=$(mktemp -d -p "$([ -w /dev/shm ] && echo /dev/shm || echo /tmp)" quillmoor-bench.XXXXXX)
trap 'tests/servers/serve.sh stop "$work/server"; rm -rf "$work"' EXIT
chmod 755 "$work"
mkdir -p "$work"/site/{files,folders,links}
(cd "$work/site/files" && seq -f 'picture-%05g.jpg' "$entries" | xargs touch)
(cd "$work/site/folders" && seq -f 'folder-%05g' "$entries" | xargs mkdir)
for ((i = 0; i < 500; i += 2)); do
  ln -s ../folders/folder-00001 "$work/site/links/to-folder-$i"
  ln -s ../files/picture-00001.jpg "$work/site/links/to-file-$i"
done
settings=$(tests/servers/serve.sh start pure-ftpd "$work/site" "$work/server")
eval "$settings"
export FTP_HOST FTP_PORT FTP_USER FTP_PASSWORD
for folder in files folders links; do
  echo "$folder:"
  build/linux/bench/BrowserBench "${FTP_ROOT%/}/$folder"
  curl -s -o /dev/null -w '| the same listing by curl | %{time_total} s |\n' --user "$FTP_USER:$FTP_PASSWORD" \
    "ftp://$FTP_HOST:$FTP_PORT${FTP_ROOT%/}/$folder/"
done
