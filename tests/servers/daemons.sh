# daemons.sh   sourced by the scripts that start servers for the tests.
# unavailable WORDS...             ends the script with status 77: the server is not available here
# unpack PACKAGE                   unpacks the Debian package without installing it, and prints the folder
# take_port                        sets port to a free port, reserved for this test until bring_up has returned
# bring_up STATE READY COMMAND...  starts the daemon, with its log and process id in STATE, and returns when the function
#                                  READY succeeds
# take_down STATE                  stops it and waits for its end

unavailable() { echo "${0##*/}: $*" >&2; exit 77; }
cache=${XDG_CACHE_HOME:-$HOME/.cache}/quillmoor/servers

unpack() {
  local version folder fetch
  version=$(apt-cache policy "$1" 2>/dev/null | sed -n 's/^ *Candidate: //p')
  folder=$cache/$1_${version//[:\/]/_}
  if [ ! -d "$folder" ]; then
    mkdir -p "$cache"
    fetch=$(mktemp -d "$cache/fetch.XXXXXX")
    if (cd "$fetch" && apt-get download -qq "$1" && dpkg -x ./*.deb unpacked) >/dev/null 2>&1; then
      mv -T "$fetch/unpacked" "$folder" 2>/dev/null || true    # unless another test has just done it
    else                                          # no package lists or no network: use an earlier one
      folder=$(find "$cache" -maxdepth 1 -name "$1_*" -print -quit)
    fi
    rm -rf "$fetch"
    [ -n "$folder" ] || unavailable "$1 could not be fetched"
  fi
  echo "$folder"
}

# Below the ephemeral ports, from which connections of other tests get theirs. A daemon whose port is taken ends, and
# READY would then be answered by another test's server; hence the lock.
take_port() {
  mkdir -p "$cache"
  exec {starting}>"$cache/starting"
  flock "$starting"
  port=$(/usr/bin/python3 - <<'PY'
import random, socket
for port in random.sample(range(22000, 32000), 100):
    with socket.socket() as s:
        if s.connect_ex(("127.0.0.1", port)) != 0:
            print(port)
            break
PY
  )
}

bring_up() {
  local state=$1 ready=$2
  shift 2
  if ! ldd "$1" >"$state/libraries" 2>&1 || grep -q "not found" "$state/libraries"; then
    grep "not found" "$state/libraries" >&2 || true
    unavailable "$1 lacks libraries; scripts/setup.sh installs them"
  fi
  # The time limit ends a server whose test was killed.
  setsid timeout 3600 "$@" >"$state/server.log" 2>&1 </dev/null {starting}>&- &
  echo $! >"$state/pid"
  for _ in $(seq 100); do
    if "$ready"; then exec {starting}>&-; return; fi
    kill -0 "$(cat "$state/pid")" 2>/dev/null || break
    sleep 0.05
  done
  echo "${0##*/}: $1 did not start:" >&2
  tail -n 15 "$state/server.log" >&2
  take_down "$state"
  exit 1
}

take_down() {
  local pid
  pid=$(cat "$1/pid" 2>/dev/null) || return 0
  kill -- "-$pid" 2>/dev/null || return 0         # its process group, including its sessions
  for _ in {1..100}; do
    kill -0 -- "-$pid" 2>/dev/null || return 0
    sleep 0.05
  done
  kill -KILL -- "-$pid" 2>/dev/null || return 0
  for _ in {1..100}; do
    kill -0 -- "-$pid" 2>/dev/null || return 0
    sleep 0.05
  done
}
