#!/usr/bin/env bash
# certificates.sh DIR KIND   makes server.key and server.crt for localhost and 127.0.0.1 in DIR, and server.pem with both.
# KIND ca: signed by a small authority, whose certificate is ca.crt; self: self-signed.
set -euo pipefail
mkdir -p "$1"
cd "$1"
names="subjectAltName=DNS:localhost,IP:127.0.0.1"
key=(-newkey rsa:2048 -nodes)                     # vsftpd has no cipher for other keys in TLS 1.2
if [ "$2" = self ]; then
  openssl req -x509 "${key[@]}" -days 30 -keyout server.key -out server.crt -subj /CN=localhost -addext "$names"
else
  openssl req -x509 "${key[@]}" -days 30 -keyout ca.key -out ca.crt -subj "/CN=Test authority" \
    -addext basicConstraints=critical,CA:TRUE -addext keyUsage=critical,keyCertSign
  openssl req "${key[@]}" -keyout server.key -out server.csr -subj /CN=localhost
  openssl x509 -req -in server.csr -CA ca.crt -CAkey ca.key -CAcreateserial -days 30 -out server.crt \
    -extfile <(echo "$names")
fi 2>openssl.log || { cat openssl.log >&2; exit 1; }
cat server.key server.crt >server.pem
chmod 600 server.key server.pem
