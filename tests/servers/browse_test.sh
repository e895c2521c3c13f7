#!/usr/bin/env bash
# browse_test.sh PROGRAM SERVER MODE   serves the sample site, with a link to a folder in it, from a real server and has
# PROGRAM (browse_tests) browse it. MODE passive or active.
set -euo pipefail
program=$1 server=$2 mode=$3
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d -t quillmoor-browse.XXXXXX)
trap '"$here/serve.sh" stop "$work/server"; rm -rf "$work"' EXIT
chmod 755 "$work"
"$here/../../scripts/sample_site.sh" "$work/site"
ln -s www/images "$work/site/pics"
settings=$("$here/serve.sh" start "$server" "$work/site" "$work/server") || exit $?
eval "$settings"
export FTP_HOST FTP_PORT FTP_USER FTP_PASSWORD FTP_ROOT FTP_MODE=$mode
case $program in
*.exe) wine "$program" ;;
*) "$program" ;;
esac
