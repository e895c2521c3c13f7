#!/usr/bin/env bash
# serve.sh start SERVER DIR STATE   serves DIR on a free loopback port; STATE gets configuration, log and pid.
#                                   Prints FTP_HOST= FTP_PORT= FTP_USER= FTP_PASSWORD= FTP_ROOT= lines, fit for
#                                   eval; FTP_ROOT is DIR as a client sees it.
# serve.sh stop STATE               ends that server and waits until it is gone
# SERVER: pyftpdlib, pure-ftpd, vsftpd or proftpd. Exit status 77 when that server cannot be had here.
#
# The three daemons conflict as Debian packages, so they are fetched without being installed and started from a
# cache outside the checkout.
set -euo pipefail

unavailable() { echo "serve.sh: $*" >&2; exit 77; }
cache=${XDG_CACHE_HOME:-$HOME/.cache}/quillmoor/servers

unpack() {                                        # PACKAGE: prints the folder it is unpacked into
  local version folder fetch
  version=$(apt-cache policy "$1" 2>/dev/null | sed -n 's/^ *Candidate: //p')
  folder=$cache/$1_${version//[:\/]/_}
  if [ ! -d "$folder" ]; then
    mkdir -p "$cache"
    fetch=$(mktemp -d "$cache/fetch.XXXXXX")
    if (cd "$fetch" && apt-get download -qq "$1" && dpkg -x ./*.deb unpacked) >/dev/null 2>&1; then
      mv -T "$fetch/unpacked" "$folder" 2>/dev/null || true    # another test may have been faster
    else                                          # no package lists or no network: what was fetched earlier
      folder=$(find "$cache" -maxdepth 1 -name "$1_*" -print -quit)
    fi
    rm -rf "$fetch"
    [ -n "$folder" ] || unavailable "$1 could not be fetched"
  fi
  echo "$folder"
}

if [ "${1:-}" = stop ]; then
  pid=$(cat "${2:?usage: serve.sh stop STATE}/pid" 2>/dev/null) || exit 0
  kill -- "-$pid" 2>/dev/null || exit 0           # its own process group, sessions included
  for _ in {1..100}; do
    kill -0 -- "-$pid" 2>/dev/null || exit 0
    sleep 0.05
  done
  kill -KILL -- "-$pid" 2>/dev/null || true
  exit 0
fi
if [ "${1:-}" != start ] || [ $# != 4 ]; then
  echo "usage: serve.sh start SERVER DIR STATE | stop STATE" >&2
  exit 2
fi

server=$2; dir=$(realpath "$3"); mkdir -p "$4"; state=$(realpath "$4")
user=keeper password="correct horse" root=/
# A free port, and below the range from which other tests' connections are given theirs meanwhile.
port=$(/usr/bin/python3 - <<'PY'
import random, socket
for port in random.sample(range(20000, 32000), 100):
    with socket.socket() as s:
        if s.connect_ex(("127.0.0.1", port)) != 0:
            print(port)
            break
PY
)
# As root, the daemons serve under another user and shut themselves into the site, which is world-readable. As anyone
# else, vsftpd and proftpd serve under that user, and a client sees the site with its whole path.
as_user=nobody as_group=nogroup
if [ "$(id -u)" != 0 ]; then as_user=$(id -un) as_group=$(id -gn); fi
hash() { openssl passwd -1 -salt quillmoo "$password"; }

case $server in
pyftpdlib)
  command=(/usr/bin/python3 -m pyftpdlib -i 127.0.0.1 -p "$port" -d "$dir" -u "$user" -P "$password") ;;
pure-ftpd)
  [ "$(id -u)" = 0 ] || unavailable "pure-ftpd needs root"
  daemon=$(unpack pure-ftpd)
  printf '%s:%s:%s:%s::%s/./::::::::::::\n' "$user" "$(hash)" "$(id -u nobody)" "$(id -g nobody)" "$dir" \
    >"$state/passwd"
  "$daemon/usr/bin/pure-pw" mkdb "$state/users.pdb" -f "$state/passwd"
  # -l users, -E no anonymous, -A chroot, -H no name look-ups, -f none: no syslog, -u lowest user id
  command=("$daemon/usr/sbin/pure-ftpd" -4 -S "127.0.0.1,$port" -l "puredb:$state/users.pdb" -E -A -H -f none -u 1
    -L 100000:50 -g "$state/server.pid") ;;
vsftpd)
  daemon=$(unpack vsftpd)
  user=anonymous launching=NO
  if [ "$(id -u)" != 0 ]; then launching=YES root=$dir; fi
  mkdir -p "$state/empty"
  cat >"$state/vsftpd.conf" <<CONF
listen=YES
listen_address=127.0.0.1
listen_port=$port
background=NO
anonymous_enable=YES
local_enable=NO
anon_root=$dir
ftp_username=games
run_as_launching_user=$launching
use_localtime=YES
anon_world_readable_only=NO
secure_chroot_dir=$state/empty
ascii_download_enable=YES
connect_from_port_20=NO
port_enable=YES
pasv_enable=YES
xferlog_enable=NO
seccomp_sandbox=NO
isolate=NO
isolate_network=NO
CONF
  command=("$daemon/usr/sbin/vsftpd" "$state/vsftpd.conf") ;;
proftpd)
  daemon=$(unpack proftpd-core)
  jail="DefaultRoot ~"
  if [ "$(id -u)" != 0 ]; then jail="" root=$dir; fi
  printf '%s:%s:%s:%s::%s:/bin/false\n' "$user" "$(hash)" "$(id -u "$as_user")" "$(id -g "$as_user")" "$dir" \
    >"$state/passwd"
  chmod 600 "$state/passwd"
  cat >"$state/proftpd.conf" <<CONF
ServerType standalone
DefaultServer on
DefaultAddress 127.0.0.1
UseIPv6 off
Port $port
User $as_user
Group $as_group
AuthOrder mod_auth_file.c
AuthUserFile $state/passwd
RequireValidShell off
$jail
ControlsEngine off
DelayEngine off
UseReverseDNS off
UseFtpUsers off
PidFile $state/server.pid
ScoreboardFile $state/scoreboard
SystemLog $state/system.log
TransferLog none
WtmpLog off
CONF
  command=("$daemon/usr/sbin/proftpd" -n -c "$state/proftpd.conf") ;;
*)
  echo "serve.sh: what server is $server?" >&2; exit 2 ;;
esac

if ! ldd "${command[0]}" >"$state/libraries" 2>&1 || grep -q "not found" "$state/libraries"; then
  grep "not found" "$state/libraries" >&2 || true
  unavailable "$server lacks libraries; scripts/setup.sh installs them"
fi
# The hour ends a server whose test was killed before it could.
setsid timeout 3600 "${command[@]}" >"$state/server.log" 2>&1 </dev/null &
echo $! >"$state/pid"
ready() {
  /usr/bin/python3 - "$port" "$user" "$password" <<'PY'
import ftplib, sys
try:
    session = ftplib.FTP()
    session.connect("127.0.0.1", int(sys.argv[1]), 5)
    session.login(sys.argv[2], sys.argv[3])
    session.quit()
except (OSError, EOFError, ftplib.Error):
    sys.exit(1)
PY
}
for _ in $(seq 100); do
  if ready; then
    printf 'FTP_HOST=127.0.0.1\nFTP_PORT=%s\nFTP_USER=%q\nFTP_PASSWORD=%q\nFTP_ROOT=%q\n' \
      "$port" "$user" "$password" "$root"
    exit 0
  fi
  kill -0 "$(cat "$state/pid")" 2>/dev/null || break
  sleep 0.05
done
echo "serve.sh: $server did not come up:" >&2
tail -n 15 "$state/server.log" >&2
"$0" stop "$state"
exit 1
