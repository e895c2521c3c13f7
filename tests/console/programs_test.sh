#!/usr/bin/env bash
# programs_test.sh PROGRAMS   what quillmoor-run and quillmoor-config answer, refuse and exit with.
set -euo pipefail
work=$(mktemp -d -t quillmoor-programs.XXXXXX)
helpers=()
export no_proxy="*"
trap 'kill "${helpers[@]}" 2>/dev/null || true; rm -rf "$work" || true' EXIT
. "$(dirname "${BASH_SOURCE[0]}")/../support/programs.sh"
lay_out "$1" "$work"
failed=0
fail() { echo "FAILED: $*" >&2; sed 's/^/    /' "$work/out" >&2; failed=1; }
expect() {                                        # STATUS TEXT COMMAND...: status, and a text in what it says
  local status=$1 text=$2 got=0
  shift 2
  "$@" >"$work/out" 2>&1 </dev/null || got=$?
  [ "$got" = "$status" ] || fail "status $got instead of $status: $*"
  [ -z "$text" ] || grep -qF -- "$text" "$work/out" || fail "no \"$text\" from: $*"
}

expect 0 "Usage: quillmoor-run" "$run" --help
expect 0 "quillmoor-run 0." "$run" --version
expect 2 "--what" "$run" --what
expect 2 "$(native "$work/program/Profiles.ini")" "$run"
expect 0 "Usage: quillmoor-config" "$config" --help
expect 0 "quillmoor-config 0." "$config" --version
expect 2 "--help" "$config"
expect 2 "--help" "$config" profile fetch

# Profiles
new=("$config" profile set "My site" Host=localhost UserID=joe Folder=/a)
expect 1 "needs a Password" "${new[@]}"
expect 1 "no line on standard input" "${new[@]}" Password=-
expect 2 "no key Colour" "${new[@]}" Password=x Colour=red
expect 2 "from 0 to 7" "${new[@]}" Password=x ProxyType=8
[ ! -e "$work/program/Profiles.ini" ] || fail "a refused profile was written"
expect 0 "" "${new[@]}" "Password=s3cret word" Folder=/b Folder=/a Port=99999 Timeout=x
expect 0 "My site  joe@localhost:21  enabled" "$config" profile list
expect 0 "Timeout=60" "$config" profile show "my SITE"
grep -qF "s3cret" "$work/out" "$work/program/Profiles.ini" && fail "a password is shown"
[ "$(grep -c '^Folder=' "$work/out")" = 2 ] || fail "not two folders"
expect 0 "" "$config" profile set "My site" Status=0
expect 0 "disabled" "$config" profile list
expect 1 "no profile Other" "$config" profile delete Other
expect 0 "" "$config" profile set " My site " Account="\"quoted\""     # the same profile
expect 0 "Account=\"quoted\"" "$config" profile show "My site"
[ "$(grep -c '^\[' "$work/program/Profiles.ini")" = 1 ] || fail "not one profile"
[ $windows = yes ] || [ "$(stat -c %a "$work/program/Profiles.ini")" = 600 ] || fail "others may read the passwords"
expect 2 "cannot be a folder" "$config" profile set "My site" Folder=
expect 2 "cannot be a folder" "$config" profile set "My site" "Folder=/a~|~/b"
expect 2 "cannot keep" "$config" profile set "My site" SaveTo=/日本
expect 2 "needs a name" "$config" profile set " " Host=x
expect 1 "needs a Host" "$config" profile set "My site" Host=" "
expect 2 "a proxy of the type" "$config" profile set "My site" Security=1 ProxyType=6
expect 2 "Certificate takes the 64" "$config" profile set "My site" Certificate=12:34
expect 0 "" "$config" profile set "My site" Security=2 Certificate="$(printf 'AB:%.0s' {1..31})CD "
expect 0 "Port=990" "$config" profile show "My site"
grep -q "^Certificate=\(ab\)*cd" "$work/program/Profiles.ini" || fail "not the digits of the fingerprint"
expect 0 "" "$config" profile set "My site" Port=990 Security=0 Certificate=
expect 0 "Port=990" "$config" profile show "My site"
grep -q "Security\|Certificate" "$work/program/Profiles.ini" && fail "defaults are written"
echo "Security=tls" >>"$work/program/Profiles.ini"
expect 2 "Security cannot be read" "$config" profile set "My site" Status=1
expect 0 "" "$config" profile set "My site" Security=0 Port=21
expect 2 "a port from 1" "$config" certificate localhost 0

# Settings
expect 0 "AutoDial=1" "$config" setting list
for number in no 1-2 "" 99999999999; do expect 2 "takes a number" "$config" setting set AutoDial "$number"; done
for pair in "LoginAttempts 100" "LoginAttempts -1" "NamesAsListed 2"; do
  expect 2 "takes a number from 0 to" "$config" setting set ${pair% *} "${pair#* }"
done
expect 0 "" "$config" setting set LoginAttempts 99
expect 0 "LoginAttempts=99" "$config" setting list
expect 0 "" "$config" setting set LoginAttempts 0
expect 2 "no setting Colour" "$config" setting set Colour red
expect 0 "" "$config" setting set ZipPassword "s3cret word"
expect 0 "(hidden)" "$config" setting get ZipPassword
expect 2 "ANSI code page" "$config" setting set ZipPassword "пароль"

expect 0 "" "$config" setting set ConnectBefore "sought"
settings_hold sought || fail "a setting is not found"
settings_hold "s3cret" && fail "a password is stored in clear"
for setting in AutoDial AutoHangUp CreateZip ConnectionDelay; do expect 0 "" "$config" setting set "$setting" 0; done
expect 0 "0" "$config" setting get AutoDial
expect 0 "Good Bye." "$run" --assume-network             # nothing enabled: nothing is left undone

expect 0 "" "$config" dialup list

# A network path is told of where there are such paths.
expect 0 "$([ $windows = yes ] && echo "drive letter")" "$config" profile set Net 'SaveTo=\\nas\backup' Host=h UserID=u Password=p Folder=/
expect 0 "" "$config" profile delete Net

# What follows is done to the programs from outside, by signals and files that Windows does not have.
if [ $windows = yes ]; then
  [ "$failed" = 0 ] && echo ok
  exit "$failed"
fi

chmod 644 "$work/program/Profiles.ini"
expect 0 "Its permissions are now 0600" "$config" profile set Other Host=h UserID=u Password=p Folder=/
expect 0 "" "$config" profile delete Other

# Dial-up, with a system of the test's own that has one entry, and that connected.
mkdir "$work/bin"
printf '#!/bin/sh\necho "u1:gsm:activated:modem:Office\\\\: 2"\n' >"$work/bin/nmcli"
chmod +x "$work/bin/nmcli"
expect 0 "Office: 2" env PATH="$work/bin:$PATH" "$config" dialup list
expect 0 "" env PATH=/nonexistent "$config" dialup list
[ ! -s "$work/out" ] || fail "entries without a system that dials"
expect 0 "" "$config" setting set AutoDial 1
expect 0 "no dial-up entry is chosen" env PATH="$work/bin:$PATH" "$run"
expect 0 "" "$config" setting set AutoDialUpConnection office
expect 0 "no dial-up entry \"office\"" env PATH="$work/bin:$PATH" "$run"
expect 0 "" "$config" setting set AutoDialUpConnection "Office: 2"
expect 0 "Good Bye." env PATH="$work/bin:$PATH" "$run"
grep -q "quillmoor-run:" "$work/out" && fail "a warning of what is right"
expect 0 "" "$config" setting set AutoDial 0

# Programs and addresses around a run. The server answers on one port, and proves itself by a certificate that nobody
# knows on the other.
openssl req -x509 -newkey rsa:2048 -nodes -subj /CN=127.0.0.1 -addext subjectAltName=IP:127.0.0.1 \
  -keyout "$work/key" -out "$work/certificate" >"$work/out" 2>&1 || fail "no certificate could be made"
/usr/bin/python3 - "$work" <<'PY' &
import socket, ssl, sys, threading
work = sys.argv[1]
tls = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
tls.load_cert_chain(work + "/certificate", work + "/key")
plain, secure, control = (socket.create_server(("127.0.0.1", 0)) for _ in range(3))
def answer(client):
    client.recv(10000)
    client.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n")
    client.close()
def serve_secure():
    while True:
        try:
            answer(tls.wrap_socket(secure.accept()[0], server_side=True))
            word = "trusted"
        except ssl.SSLError as error:
            word = error.reason
        with open(work + "/tls", "a") as log:
            print(word, file=log)
def serve_ftp():
    while True:
        client = control.accept()[0]
        client.sendall(b"220 Here.\r\n")
        client.recv(100)
        client.sendall(b"234 Begin.\r\n")
        tls.wrap_socket(client, server_side=True).close()
for serve in serve_secure, serve_ftp:
    threading.Thread(target=serve, daemon=True).start()
with open(work + "/ports", "w") as ports:
    print(*(server.getsockname()[1] for server in (plain, secure, control)), file=ports)
while True:
    answer(plain.accept()[0])
PY
helpers+=($!)
mkfifo "$work/told"
exec 7<>"$work/told"
for name in before after; do
  printf '#!/bin/sh\necho "%s $#" >"%s"\n' "$name" "$work/told" >"$work/bin/$name me"
  chmod +x "$work/bin/$name me"
done
until read -r plain secure control 2>/dev/null <"$work/ports"; do read -rt 0.02 <> <(:) || true; done
fingerprint=$(openssl x509 -in "$work/certificate" -noout -fingerprint -sha256 | sed 's/.*=//; s/://g')
expect 0 "fingerprint: ${fingerprint,,}" "$config" certificate 127.0.0.1 "$control"
grep -qx "Verified by this system: no, self-signed certificate" "$work/out" || fail "not why it is not verified"
expect 0 "Verified by this system: yes" env SSL_CERT_FILE="$work/certificate" "$config" certificate 127.0.0.1 "$control"
expect 0 "" "$config" profile set "My site" Certificate="$fingerprint"
for pair in "RunBefore=$work/bin/before me" "ConnectBefore=127.0.0.1:$plain/" "RunAfter=$work/bin/after me" \
  "ConnectAfter=https://127.0.0.1:$secure/"; do expect 0 "" "$config" setting set "${pair%%=*}" "${pair#*=}"; done
expect 0 "Running: $work/bin/before me...Done." "$run" --assume-network
for line in "Connecting to: 127.0.0.1:$plain/" "Connection Status Success. " "Connecting to: https://127.0.0.1:$secure/" \
  "Connection Status Failed. "; do grep -qxF "$line" "$work/out" || fail "no line \"$line\""; done
grep -q "after me" "$work/out" && fail "the program after a run is in the log"
# The one is not waited for before the other is started. The server may still be taking the refusal.
told=$(for _ in before after; do read -rt 20 line <&7 && echo "$line" || true; done | sort)
exec 7<&-
[ "$told" = $'after 0\nbefore 0' ] || fail "the programs around the run were not both started: $told"
for _ in {1..1000}; do [ ! -s "$work/tls" ] || break; read -rt 0.02 <> <(:) || true; done
grep -q UNKNOWN_CA "$work/tls" || fail "the certificate was not what the secure address failed for: $(cat "$work/tls")"
for setting in RunBefore ConnectBefore RunAfter ConnectAfter; do expect 0 "" "$config" setting set $setting ""; done

# Ctrl-C: a server that takes the connection and says nothing keeps a login waiting.
/usr/bin/python3 -c '
import socket, sys
s = socket.socket(); s.bind(("127.0.0.1", 0)); s.listen(); print(s.getsockname()[1], flush=True)
while True: c = s.accept()[0]; sys.modules.setdefault(str(id(c)), c)' >"$work/port" &
helpers+=($!)
until [ -s "$work/port" ]; do read -rt 0.02 <> <(:) || true; done
expect 0 "" "$config" profile set "My site" Status=1 Host=127.0.0.1 Port="$(cat "$work/port")"
interrupted() {                                   # TIMES [PREFIX...]: the status of a run that gets as many Ctrl-C
  local status=0 pid stat
  : >"$work/out"
  (exec "${@:2}" setsid "$run" --assume-network >"$work/out" 2>&1) &
  pid=$!
  until grep -q "Connecting" "$work/out"; do kill -0 "$pid" 2>/dev/null || break; read -rt 0.02 <> <(:) || true; done
  read -ra stat <"/proc/$pid/stat"
  echo "${stat[18]}" >"$work/nice"
  for ((i = 0; i < $1; i++)); do kill -INT "$pid"; done
  wait "$pid" || status=$?
  echo "$status"
}
alone() {                                         # while a run goes on, another one is refused
  setsid "$run" --assume-network >"$work/first" 2>&1 &
  local first=$!
  until grep -q "Connecting" "$work/first"; do kill -0 "$first" 2>/dev/null || break; read -rt 0.02 <> <(:) || true; done
  expect 2 "Another backup run is in progress" "$run" --assume-network
  kill -INT "$first"
  wait "$first" || true
}
alone
[ "$(interrupted 1)" = 1 ] || fail "a stopped run does not end with 1"
grep -q "Error: Unable to login" "$work/out" && grep -q "Good Bye." "$work/out" || fail "a stopped run does not unwind"
second=$(interrupted 2)                           # both may arrive as one
[ "$second" = 130 ] || [ "$second" = 1 ] || fail "a second Ctrl-C ends with $second"

# The run takes the priority that is set; a normal one leaves it as it was started.
interrupted 1 nice -n 3 >/dev/null
[ "$(cat "$work/nice")" = "$(nice -n 3 nice)" ] || fail "a run that was started nicely has the nice value $(cat "$work/nice")"
expect 0 "" "$config" setting set ProcessPriority 64
interrupted 1 >/dev/null
[ "$(cat "$work/nice")" = 19 ] || fail "an idle run has the nice value $(cat "$work/nice")"

# A settings file that is no settings file
echo "rubbish" >"$work/config/quillmoor/registry.reg"
expect 2 "$work/config/quillmoor/registry.reg" "$run" --assume-network
expect 1 "line 1" "$config" setting get AutoDial
expect 1 "registry.reg" "$config" setting set AutoDial 0
[ "$(cat "$work/config/quillmoor/registry.reg")" = rubbish ] || fail "a damaged settings file was written over"

[ "$failed" = 0 ] && echo ok
exit "$failed"
