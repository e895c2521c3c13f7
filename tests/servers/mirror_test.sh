#!/usr/bin/env bash
# mirror_test.sh PROGRAMS SERVER MODE [TLS [PROXY TYPE]]   backs up the sample site from a real server (MODE passive or
# active, TLS as for serve.sh), again incrementally, and packs it. PROGRAMS is the folder of quillmoor-run and
# quillmoor-config. With a PROXY of proxy.sh: through it, with that proxy TYPE in the profile. Only what came without TLS and
# without a proxy is packed.
set -euo pipefail
programs=$(realpath "$1") server=$2 mode=$3 tls=${4:-plain} proxy=${5:-} type=${6:-0}
export TZ=UTC                                     # some servers list UTC; this makes it the local time
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$here/../support/programs.sh"
work=$(mktemp -d -t quillmoor-mirror.XXXXXX)
trap '"$here/proxy.sh" stop "$work/proxy"; "$here/serve.sh" stop "$work/server"; rm -rf "$work" || true' EXIT
chmod 755 "$work"
fail() { echo "FAILED: $*" >&2; [ ! -e "$work/log" ] || tail -n 40 "$work/log" >&2; exit 1; }

"$here/../../scripts/sample_site.sh" "$work/site"
settings=$("$here/serve.sh" start "$server" "$work/site" "$work/server" "$tls") || exit $?
eval "$settings"

mkdir "$work/backup"
lay_out "$programs" "$work"
for setting in AutoDial AutoHangUp CreateZip; do "$config" setting set "$setting" 0; done
"$config" profile set site Host="$FTP_HOST" Port="$FTP_PORT" UserID="$FTP_USER" Password=- SaveTo="$(native "$work/backup/")" \
  Folder="$FTP_ROOT" Timeout=20 PASV="$([ "$mode" = passive ] && echo 1 || echo 0)" <<<"$FTP_PASSWORD"
[ "$tls" = plain ] || "$config" profile set site Security="$FTP_SECURITY"
if [ -n "$proxy" ]; then
  settings=$("$here/proxy.sh" start "$proxy" "$FTP_PORT" "$work/proxy") || exit $?
  eval "$settings"
  # SOCKS 5 gets a name, which the proxy looks up. A pipe ignores the server's name, so here it does not exist.
  host=$FTP_HOST
  if [ "$type" = 2 ] && getent ahostsv4 localhost >/dev/null; then host=localhost; fi
  [ "$type" != 7 ] || host=server.invalid
  "$config" profile set site Host="$host" ProxyType="$type" ProxyHost=127.0.0.1 ProxyPort="$PROXY_PORT" \
    ProxyUsername="$PROXY_USER" ProxyPassword=- <<<"$PROXY_PASSWORD"
fi

backup() { "$run" --assume-network >"$work/log" || fail "quillmoor-run ended with status $?"; }
copy=$work/backup/site${FTP_ROOT%/}
state() { (cd "$copy" && find . -printf '%p %i %T@ %s\n' | sort); }
dates() { (cd "$1" && find . -type f -printf '%TF %TH:%TM %p\n' | sort -k3); }

if [ "$tls" != plain ]; then
  "$config" setting set LoginAttempts 1
  "$run" --assume-network >"$work/log" 2>&1 && fail "a certificate that nothing vouches for was accepted"
  grep -q "${FTP_CERTIFICATE:-fingerprint}" "$work/log" || fail "the log does not name the certificate that was refused"
  if [ -n "${FTP_CA:-}" ]; then
    SSL_CERT_FILE=$(native "$FTP_CA")
    export SSL_CERT_FILE
  else
    "$config" profile set site Certificate="$FTP_CERTIFICATE"
  fi
fi
backup
if [ "$tls" != plain ]; then
  IFS=, read -r _ version _ <<<"$tls"
  grep -q "^Encrypted: TLSv$version, " "$work/log" || fail "the log does not tell how the session was encrypted"
fi
grep -qF "$FTP_PASSWORD" "$work/log" && fail "the password is in the log"
[ -z "$proxy" ] || [ -z "$PROXY_PASSWORD" ] || ! grep -qF "$PROXY_PASSWORD" "$work/log" || fail "the proxy's password is in the log"
grep -q 'Completed' "$work/log" || fail "the report does not say Completed"
# The expected backup: everything but the link, text files with the platform's line ends.
cp -a "$work/site" "$work/expected"
rm "$work/expected/www/start.html"
# A listing with a time of day has no year; a backup then assumes this year, also in January.
touch -d "$(date +%Y)-$(date -r "$work/site/www/index.html" '+%m-%d %H:%M')" "$work/expected/www/index.html"
if [ $windows = yes ]; then
  while read -rd '' text; do
    touch -r "$text" "$work/dated"
    sed -i 's/$/\r/' "$text"
    touch -r "$work/dated" "$text"
  done < <(find "$work/expected" -type f \( -iname '*.html' -o -iname '*.txt' -o -iname '*.cgi' \) -size +0 -print0)
fi
diff -r "$work/expected" "$copy" || fail "the backup differs from the site"
diff <(dates "$work/expected") <(dates "$copy") || fail "the dates of files differ from the site's"

# The profile's port range is not used: in this one, the server's own port, no port could be opened.
"$config" profile set site ManualPort=1 MinData="$FTP_PORT" MaxData="$FTP_PORT"
"$config" setting set BackupMode 2
before=$(state)
backup
[ "$before" = "$(state)" ] || fail "the second run has changed files"
files=$(find "$work/expected" -type f | wc -l)
[ "$(grep -c '^Skipped: File upto date$' "$work/log")" = "$files" ] || fail "the second run did not skip every file"
"$config" setting set BackupMode 1

# A file is missing in the copy only: the next run fetches just that.
rm "$copy/www/index.html"
"$config" setting set BackupMode 2
backup
diff -r "$work/expected" "$copy" || fail "a missing file was not fetched again"
[ "$(grep -c '^Skipped: File upto date$' "$work/log")" = "$((files - 1))" ] || fail "more than the missing file was fetched"

if [ -n "$proxy" ]; then
  # Data connections went through the proxy too: it logs each one, or at least each command.
  noted=$(cat "$work"/proxy/*.log | wc -l)
  [ "$noted" -gt "$files" ] || fail "the proxy has noted only $noted lines"
fi
if [ "$proxy" = recorder ]; then
  # Without TLS all of it is there, which shows that the search finds it.
  read -r found all < <(/usr/bin/python3 "$here/recorder.py" search "$work/proxy/recorded" "$copy" "$FTP_USER" "$FTP_PASSWORD")
  [ "$found" = "$([ "$tls" = plain ] && echo "$all" || echo 0)" ] ||
    fail "of $all pieces of the site, its names and the login, $found were readable on the way"
fi
if [ "$tls" != plain ] || [ -n "$proxy" ]; then
  echo "ok: $server, $mode, $tls${proxy:+, through $proxy as type $type}, $files files"
  exit 0
fi

# An archive in segments with a password and a copy of the set, both unpacked by another program; then a
# self-extracting one.
mkdir "$work/copies"
for pair in CreateZip=1 SplitZip=1 ZipSpanSize=1 "ZipPassword=open sesame" "ZipCopies=$(native "$work/copies")"; do
  "$config" setting set "${pair%%=*}" "${pair#*=}"
done
backup
grep -qF "open sesame" "$work/log" && fail "the archive's password is in the log"
for line in "Creating Zip File: $(native "$work/backup/site.zip")" "Done Zip File." "Copy files success."; do
  grep -qxF "$line" "$work/log" || fail "no line \"$line\""
done
unpacked() {                                      # COMMAND...: unpacks into $work/unpacked, which must equal the backup
  "$@" >"$work/said" 2>&1 </dev/null || { cat "$work/said" >&2; fail "status $?: $*"; }
  diff -r "$work/backup/site" "$work/unpacked" || fail "differs from the backup: $*"
  diff <(dates "$work/backup/site") <(dates "$work/unpacked") || fail "the dates of files differ: $*"
  rm -r "$work/unpacked"
}
for folder in backup copies; do
  segments=("$work/$folder"/site.z*)
  [ ${#segments[@]} = 3 ] || fail "not three segments: ${segments[*]}"
  7z t -pwrong "${segments[-1]}" >/dev/null 2>&1 </dev/null && fail "opens without its password: ${segments[-1]}"
  unpacked 7z x "-popen sesame" -o"$work/unpacked" "${segments[-1]}"
done
for pair in SplitZip=0 ZipSelfExtract=1 ZipPassword= ZipCopies=; do "$config" setting set "${pair%%=*}" "${pair#*=}"; done
backup
grep -qxF "Done Self-Extracting Zip File." "$work/log" || fail "no archive that unpacks itself"
unpacked 7z x -o"$work/unpacked" "$work/backup/site.exe"
[ $windows = yes ] || unpacked "$work/backup/site.exe" "$work/unpacked"
echo "ok: $server, $mode, $files files"
