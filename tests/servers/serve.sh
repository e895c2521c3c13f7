#!/usr/bin/env bash
# serve.sh start SERVER DIR STATE [TLS]
#       serves DIR on a free loopback port; configuration, log and pid are in the folder STATE. Prints FTP_HOST= FTP_PORT=
#       FTP_USER= FTP_PASSWORD= FTP_ROOT= lines for eval; FTP_ROOT is DIR as a client sees it.
#       TLS: plain, the default, or KIND,VERSION,CERTIFICATE: both connections must be encrypted, and where the server can
#       demand it (vsftpd, proftpd), a data connection must resume a session. KIND explicit, with those two also implicit,
#       with pure-ftpd also offered: explicit, but a client may do without. VERSION 1.2 or 1.3; CERTIFICATE ca or self. Then it also prints FTP_SECURITY= as a profile has it, and either
#       FTP_CERTIFICATE= with the fingerprint of the self-signed certificate or FTP_CA= with the file of the authority.
# serve.sh stop STATE
#       stops that server and waits for its end
# SERVER: pyftpdlib, pure-ftpd, vsftpd or proftpd. Exit status 77 if that server is not available here.
#
# The Debian packages of the three daemons conflict, so they are not installed but unpacked into a cache outside the
# checkout and started from there.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/daemons.sh"

if [ "${1:-}" = stop ]; then
  take_down "${2:?usage: serve.sh stop STATE}"
  exit 0
fi
if [ "${1:-}" != start ] || [ $# -lt 4 ] || [ $# -gt 5 ]; then
  echo "usage: serve.sh start SERVER DIR STATE [TLS] | stop STATE" >&2
  exit 2
fi

server=$2; dir=$(realpath "$3"); mkdir -p "$4"; state=$(realpath "$4")
user=keeper password="correct horse" root=/
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
IFS=, read -r kind version certificate <<<"${5:-plain}"
if [ "$kind" != plain ]; then
  case $kind,$server in
  explicit,* | implicit,vsftpd | implicit,proftpd | offered,pure-ftpd) ;;
  *) echo "serve.sh: no TLS of kind $kind with $server" >&2; exit 2 ;;
  esac
  "$here/certificates.sh" "$state/tls" "$certificate"
  # Not every server has a setting for the version, but OpenSSL, which all of them use, has one.
  cat >"$state/tls/openssl.cnf" <<CONF
openssl_conf = all
[all]
ssl_conf = ssl
[ssl]
system_default = versions
[versions]
MinProtocol = TLSv$version
MaxProtocol = TLSv$version
CONF
  export OPENSSL_CONF=$state/tls/openssl.cnf
fi
take_port
# As root, the daemons serve as another user with the site, which is world-readable, as their root folder. Otherwise
# vsftpd and proftpd serve as the current user, and a client sees the site under its full path.
as_user=nobody as_group=nogroup
if [ "$(id -u)" != 0 ]; then as_user=$(id -un) as_group=$(id -gn); fi
hash() { openssl passwd -1 -salt quillmoo "$password"; }

case $server in
pyftpdlib)
  command=(/usr/bin/python3 -m pyftpdlib -i 127.0.0.1 -p "$port" -d "$dir" -u "$user" -P "$password")
  if [ "$kind" != plain ]; then
    /usr/bin/python3 -c "import OpenSSL" 2>/dev/null || unavailable "pyftpdlib needs python3-openssl for TLS"
    command=(/usr/bin/python3 "$here/pyftpdlib_tls.py" "$port" "$dir" "$user" "$password" "$state/tls/server.pem")
  fi ;;
pure-ftpd)
  [ "$(id -u)" = 0 ] || unavailable "pure-ftpd needs root"
  daemon=$(unpack pure-ftpd)
  printf '%s:%s:%s:%s::%s/./::::::::::::\n' "$user" "$(hash)" "$(id -u nobody)" "$(id -g nobody)" "$dir" \
    >"$state/passwd"
  "$daemon/usr/bin/pure-pw" mkdb "$state/users.pdb" -f "$state/passwd"
  # -l users, -E no anonymous, -A chroot, -H no name look-ups, -f none: no syslog, -u lowest user id
  command=("$daemon/usr/sbin/pure-ftpd" -4 -S "127.0.0.1,$port" -l "puredb:$state/users.pdb" -E -A -H -f none -u 1
    -L 100000:50 -g "$state/server.pid")
  case $kind in
  explicit) command+=(-Y 3 -2 "$state/tls/server.pem") ;;
  offered) command+=(-Y 1 -2 "$state/tls/server.pem") ;;
  esac ;;
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
  if [ "$kind" != plain ]; then
    cat >>"$state/vsftpd.conf" <<CONF
ssl_enable=YES
allow_anon_ssl=YES
force_anon_logins_ssl=YES
force_anon_data_ssl=YES
require_ssl_reuse=YES
rsa_cert_file=$state/tls/server.crt
rsa_private_key_file=$state/tls/server.key
implicit_ssl=$([ "$kind" = implicit ] && echo YES || echo NO)
CONF
  fi
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
  if [ "$kind" != plain ]; then
    modules=$(unpack proftpd-mod-crypto)/usr/lib/proftpd
    # SocketBindTight: without it the server listens on all addresses.
    cat >>"$state/proftpd.conf" <<CONF
SocketBindTight on
ModulePath $modules
LoadModule mod_tls.c
TLSEngine on
TLSRSACertificateFile $state/tls/server.crt
TLSRSACertificateKeyFile $state/tls/server.key
TLSVerifyClient off
TLSRequired on
TLSLog $state/tls.log
$([ "$kind" = implicit ] && echo "TLSOptions UseImplicitSSL")
CONF
  fi
  command=("$daemon/usr/sbin/proftpd" -n -c "$state/proftpd.conf") ;;
*)
  echo "serve.sh: unknown server $server" >&2; exit 2 ;;
esac

ready() {
  /usr/bin/python3 - "$port" "$user" "$password" "$kind" <<'PY'
import ftplib, socket, ssl, sys
try:
    kind = sys.argv[4]
    session = ftplib.FTP_TLS() if kind == "explicit" else ftplib.FTP()
    if kind == "implicit":
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_CLIENT)
        context.check_hostname, context.verify_mode = False, ssl.CERT_NONE
        session.sock = context.wrap_socket(socket.create_connection(("127.0.0.1", int(sys.argv[1])), 5))
        session.af, session.file = session.sock.family, session.sock.makefile("r", encoding="latin-1")
        session.getresp()
    else:
        session.connect("127.0.0.1", int(sys.argv[1]), 5)
    session.login(sys.argv[2], sys.argv[3])
    session.quit()
except (OSError, EOFError, ftplib.Error):
    sys.exit(1)
PY
}
bring_up "$state" ready "${command[@]}"
printf 'FTP_HOST=127.0.0.1\nFTP_PORT=%s\nFTP_USER=%q\nFTP_PASSWORD=%q\nFTP_ROOT=%q\n' "$port" "$user" "$password" "$root"
if [ "$kind" != plain ]; then
  fingerprint=$(openssl x509 -in "$state/tls/server.crt" -noout -fingerprint -sha256 | tr -d : | tr A-F a-f)
  [ "$kind" = implicit ] && echo FTP_SECURITY=2 || echo FTP_SECURITY=1
  [ "$certificate" = self ] && echo "FTP_CERTIFICATE=${fingerprint#*=}" || printf 'FTP_CA=%q\n' "$state/tls/ca.crt"
fi
