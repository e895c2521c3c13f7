#!/usr/bin/env bash
# browse_test.sh PROGRAM SERVER MODE [PROXY TYPE]   serves the sample site, with a link to a folder added, from a real server
# and runs PROGRAM (browse_tests) on it. MODE passive or active. With a PROXY of proxy.sh: through it, with that proxy TYPE.
set -euo pipefail
program=$1 server=$2 mode=$3 proxy=${4:-} type=${5:-0}
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d -t quillmoor-browse.XXXXXX)
trap '"$here/proxy.sh" stop "$work/proxy"; "$here/serve.sh" stop "$work/server"; rm -rf "$work" || true' EXIT
chmod 755 "$work"
"$here/../../scripts/sample_site.sh" "$work/site"
ln -s www/images "$work/site/pics"
settings=$("$here/serve.sh" start "$server" "$work/site" "$work/server") || exit $?
eval "$settings"
PROXY_PORT='' PROXY_USER='' PROXY_PASSWORD=''
if [ -n "$proxy" ]; then
  settings=$("$here/proxy.sh" start "$proxy" "$FTP_PORT" "$work/proxy") || exit $?
  eval "$settings"
fi
export PROXY_TYPE=$type PROXY_PORT PROXY_USER PROXY_PASSWORD
export FTP_HOST FTP_PORT FTP_USER FTP_PASSWORD FTP_ROOT FTP_MODE=$mode
case $program in
*.exe) wine "$program" ;;
*) "$program" ;;
esac
