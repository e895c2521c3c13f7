#!/usr/bin/env bash
# network_namespace_test.sh NETWORK_STATE   what the program says of networks made for it: a cable, a pulled cable, a dial-up
# link. They lie in a namespace of their own; where a user may not make one, the test is skipped.
set -euo pipefail
if [ "${2:-}" != inside ]; then
  unshare --user --map-root-user --net true 2>/dev/null || { echo "skipped: no network namespaces here"; exit 77; }
  exec unshare --user --map-root-user --net "$0" "$1" inside
fi
helper=""
trap '[ -z "$helper" ] || kill "$helper" 2>/dev/null || true' EXIT
failed=0
say() {                                           # NETWORK LAN WHEN: waits until the program says so
  local expected="network:$1 lan:$2" got end=$((SECONDS + 20))
  while got=$("$program"); [ "$got" != "$expected" ]; do
    if [ "$SECONDS" -ge "$end" ]; then
      echo "FAILED: $got instead of $expected: $3" >&2
      ip address >&2
      failed=1
      return
    fi
    read -rt 0.05 <> <(:) || true
  done
}
carrier() {                                       # DEVICE: waits until the device runs
  until [[ $(ip -o link show "$1") == *LOWER_UP*"state UP"* ]]; do read -rt 0.02 <> <(:) || true; done
}
program=$1

say no no "nothing but a loopback that is down"
ip link set lo up
ip address add 10.1.0.1/8 dev lo
ip link add cable type veth peer name socket || { echo "skipped: no pair of network devices here"; exit 77; }
ip link set cable up
ip link set socket up
carrier cable
say no no "a cable, but no address"
ip address add 169.254.7.7/16 dev cable
say no no "an address that the machine gave itself"
ip address add 192.0.2.1/24 dev cable
say yes yes "a LAN"
ip link set socket down
say no no "the cable is pulled"
ip address del 192.0.2.1/24 dev cable
ip address add 2001:db8::1/64 dev cable nodad
ip link set socket up
say yes yes "a LAN with nothing but IPv6"

[ -w /dev/net/tun ] || { echo "skipped: no point-to-point device here"; exit $((failed ? 1 : 77)); }
# A tunnel runs for as long as a program holds it.
coproc TUNNEL { exec /usr/bin/python3 -c '
import fcntl, struct, sys
tunnel = open("/dev/net/tun", "r+b", buffering=0)
fcntl.ioctl(tunnel, 0x400454CA, struct.pack("16sH22x", b"dialled", 0x1001))  # TUNSETIFF: IFF_TUN | IFF_NO_PI
print("ready", flush=True)
sys.stdin.read()'; }
helper=$TUNNEL_PID
read -r ready <&"${TUNNEL[0]}" && [ "$ready" = ready ]
ip address add 198.51.100.1 peer 198.51.100.2 dev dialled
ip link set dialled up
say yes no "a LAN and a dial-up link at once"
ip link del cable
say yes no "a dial-up link alone"
kill "$helper"
say no no "the line has dropped"
[ "$failed" = 0 ] && echo ok
exit "$failed"
