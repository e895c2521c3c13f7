#!/usr/bin/env bash
# proxy.sh start PROXY PORT STATE   starts a proxy on a free loopback port; STATE gets configuration, log and pid. PORT is
#                                   that of the FTP server to which a proxy leads that is not told. Prints PROXY_PORT=
#                                   PROXY_USER= PROXY_PASSWORD= lines, fit for eval.
# proxy.sh stop STATE               ends that proxy and waits until it is gone
# PROXY: dante (SOCKS 4 and 5 with BIND, no login), microsocks (SOCKS 5 with a login), or ftp-proxy (FTP; USER user@host,
# and a pipe where no host is named). Exit status 77 when that proxy cannot be had here.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/daemons.sh"

if [ "${1:-}" = stop ]; then
  take_down "${2:?usage: proxy.sh stop STATE}"
  exit 0
fi
if [ "${1:-}" != start ] || [ $# != 4 ]; then
  echo "usage: proxy.sh start PROXY PORT STATE | stop STATE" >&2
  exit 2
fi

proxy=$2; ftp_port=$3; mkdir -p "$4"; state=$(realpath "$4")
user='' password=''
take_port
run_as=nobody
[ "$(id -u)" = 0 ] || run_as=$(id -un)

case $proxy in
dante)
  daemon=$(unpack dante-server)
  cat >"$state/danted.conf" <<CONF
logoutput: stderr
internal: 127.0.0.1 port = $port
external: 127.0.0.1
clientmethod: none
socksmethod: none
user.privileged: $(id -un)
user.unprivileged: $run_as
client pass {
  from: 127.0.0.0/8 to: 0.0.0.0/0
}
socks pass {
  from: 127.0.0.0/8 to: 127.0.0.0/8
  command: bind connect bindreply
  log: error connect
}
CONF
  command=("$daemon/usr/sbin/danted" -f "$state/danted.conf" -p "$state/danted.pid") ;;
microsocks)
  daemon=$(unpack microsocks)
  user=gate password="open sesame"
  command=("$daemon/usr/bin/microsocks" -i 127.0.0.1 -p "$port" -u "$user" -P "$password") ;;
ftp-proxy)
  daemon=$(unpack ftp-proxy)
  # It connects from the first of these or not at all: a port that nobody else is given.
  data_port=$((port - 11000))
  cat >"$state/ftp-proxy.conf" <<CONF
ServerType standalone
Listen 127.0.0.1
Port $port
DestinationAddress 127.0.0.1
DestinationPort $ftp_port
AllowMagicUser yes
ActiveMinDataPort $data_port
ActiveMaxDataPort $data_port
LogDestination $state/proxy.log
PidFile $state/proxy.pid
CONF
  command=("$daemon/usr/sbin/ftp-proxy" -d -n -f "$state/ftp-proxy.conf") ;;
*)
  echo "proxy.sh: what proxy is $proxy?" >&2; exit 2 ;;
esac

ready() { /usr/bin/python3 -c 'import socket, sys; socket.create_connection(("127.0.0.1", int(sys.argv[1])), 5)' "$port" 2>/dev/null; }
bring_up "$state" ready "${command[@]}"
printf 'PROXY_PORT=%s\nPROXY_USER=%q\nPROXY_PASSWORD=%q\n' "$port" "$user" "$password"
