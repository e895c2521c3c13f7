#!/usr/bin/env bash
# network_manager_test.sh PROGRAMS   the entries of a real NetworkManager, which runs in namespaces of its own with a bus of its
# own. Skipped where it is not installed or no namespaces may be made.
set -euo pipefail
if [ "${3:-}" != inside ]; then
  for program in dbus-daemon NetworkManager nmcli ip; do
    PATH=$PATH:/usr/sbin command -v "$program" >/dev/null || { echo "skipped: no $program here"; exit 77; }
  done
  spaces=(unshare --user --map-root-user --net --mount --pid --fork --kill-child)
  "${spaces[@]}" mount -t tmpfs none /run 2>/dev/null || { echo "skipped: no namespaces here"; exit 77; }
  work=$(mktemp -d -t quillmoor-manager.XXXXXX)
  trap 'rm -rf "$work" || true' EXIT
  status=0
  "${spaces[@]}" "$0" "$1" "$work" inside || status=$?
  exit "$status"
fi
work=$2
PATH=$PATH:/usr/sbin
export XDG_CONFIG_HOME=$work/config
mkdir "$work/program" "$work/state"
cp "$1/quillmoor-config" "$work/program/"
mount -t proc none /proc
mount -t tmpfs none /run
mount -t tmpfs none /etc/NetworkManager
mkdir -p /run/dbus /etc/NetworkManager/system-connections
[ ! -d /var/lib/NetworkManager ] || mount --bind "$work/state" /var/lib/NetworkManager
cat >"$work/bus.conf" <<'CONF'
<busconfig>
  <type>system</type>
  <listen>unix:path=/run/dbus/system_bus_socket</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*"/><allow receive_sender="*"/><allow own="*"/><allow user="*"/>
  </policy>
</busconfig>
CONF
printf '[main]\nplugins=keyfile\nauth-polkit=false\n' >/etc/NetworkManager/NetworkManager.conf
dbus-daemon --config-file="$work/bus.conf" --nofork --nopidfile >"$work/log" 2>&1 &
NetworkManager --no-daemon >>"$work/log" 2>&1 &
skip() { cat "$work/log"; echo "skipped: $1"; exit 77; }
end=$((SECONDS + 20))
until nmcli general status >/dev/null 2>&1; do
  [ "$SECONDS" -lt "$end" ] || skip "NetworkManager does not come up here"
  read -rt 0.05 <> <(:) || true
done
[ -z "$("$work/program/quillmoor-config" dialup list)" ] || { echo "FAILED: entries before there are any"; exit 1; }
export LC_ALL=C.UTF-8
add() { nmcli connection add autoconnect no "$@" >>"$work/log" 2>&1 || skip "NetworkManager takes no connection: $*"; }
add type gsm ifname '*' apn internet con-name 'Büro: mobil \ 1'
add type pppoe ifname line username joe con-name DSL
add type ethernet ifname '*' con-name Cable
add type bluetooth ifname '*' bluetooth.type panu bluetooth.bdaddr 00:11:22:33:44:55 con-name Phone
got=$("$work/program/quillmoor-config" dialup list | sort)
expected=$(printf '%s\n' 'Büro: mobil \ 1' DSL Phone | sort)
[ "$got" = "$expected" ] || { echo "FAILED: the entries are"; echo "$got"; cat "$work/log"; exit 1; }
echo ok
