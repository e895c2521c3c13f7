#!/usr/bin/env bash
# proxy.sh start PROXY PORT STATE   starts a proxy on a free loopback port; its configuration, log and pid are in the folder
#                                   STATE. PORT is the port of the FTP server, used if the client names no server. Prints
#                                   PROXY_PORT= PROXY_USER= PROXY_PASSWORD= lines for eval.
# proxy.sh stop STATE               stops that proxy and waits for its end
# PROXY: dante (SOCKS 4 and 5 with BIND, no login), microsocks (SOCKS 5 with a login), ftp-proxy (FTP; USER user@host,
# and a pipe if no host is named), or recorder (SOCKS 4; keeps what passes in STATE/recorded). Exit status 77 if that proxy
# is not available here.
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
  # It connects only from the first port of this range, so the range is one port that no other test uses.
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
recorder)
  command=(/usr/bin/python3 "$(dirname "${BASH_SOURCE[0]}")/recorder.py" serve "$port" "$state/recorded") ;;
*)
  echo "proxy.sh: unknown proxy $proxy" >&2; exit 2 ;;
esac

ready() { /usr/bin/python3 -c 'import socket, sys; socket.create_connection(("127.0.0.1", int(sys.argv[1])), 5)' "$port" 2>/dev/null; }
bring_up "$state" ready "${command[@]}"
printf 'PROXY_PORT=%s\nPROXY_USER=%q\nPROXY_PASSWORD=%q\n' "$port" "$user" "$password"
