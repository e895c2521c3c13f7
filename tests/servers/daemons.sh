# daemons.sh   for the scripts that start servers for the tests; they source it.
# unavailable WORDS...             ends the script with status 77: that server cannot be had here
# unpack PACKAGE                   prints the folder into which the Debian package is unpacked, without being installed
# take_port                        sets port to a free one, which no other test is given until bring_up has returned
# bring_up STATE READY COMMAND...  starts the daemon with its log and process id in STATE, and returns when the function
#                                  READY succeeds
# take_down STATE                  ends it and waits until it is gone

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
      mv -T "$fetch/unpacked" "$folder" 2>/dev/null || true    # another test may have been faster
    else                                          # no package lists or no network: what was fetched earlier
      folder=$(find "$cache" -maxdepth 1 -name "$1_*" -print -quit)
    fi
    rm -rf "$fetch"
    [ -n "$folder" ] || unavailable "$1 could not be fetched"
  fi
  echo "$folder"
}

# Below the range from which other tests' connections are given theirs meanwhile. A daemon that finds its port taken ends,
# and READY would be answered by whoever has it, until that one's test is over.
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
  # The hour ends a server whose test was killed before it could.
  setsid timeout 3600 "$@" >"$state/server.log" 2>&1 </dev/null {starting}>&- &
  echo $! >"$state/pid"
  for _ in $(seq 100); do
    if "$ready"; then exec {starting}>&-; return; fi
    kill -0 "$(cat "$state/pid")" 2>/dev/null || break
    sleep 0.05
  done
  echo "${0##*/}: $1 did not come up:" >&2
  tail -n 15 "$state/server.log" >&2
  take_down "$state"
  exit 1
}

take_down() {
  local pid
  pid=$(cat "$1/pid" 2>/dev/null) || return 0
  kill -- "-$pid" 2>/dev/null || return 0         # its own process group, sessions included
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
