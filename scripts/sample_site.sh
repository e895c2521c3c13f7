#!/usr/bin/env bash
# sample_site.sh DIR   writes a small web site into DIR that has the hard cases of a backup in miniature.
set -euo pipefail
[ $# = 1 ] || { echo "usage: sample_site.sh DIR" >&2; exit 2; }
mkdir -p "$1"
cd "$1"
mkdir -p "www/images/2019" "www/downloads" "www/with blanks in it" "www/grüße" "www/empty" "cgi-bin"
printf '<html>\n<body>Welcome.</body>\n</html>\n' >www/index.html
printf 'RewriteEngine on\nRewriteRule ^old$ /index.html\n' >www/.htaccess
printf '#!/usr/bin/perl\nprint "Content-type: text/plain\\n\\nhello\\n";\n' >cgi-bin/hello.cgi
printf 'one\ntwo\n' >"www/with blanks in it/read me  first.txt"
printf 'Grüße aus dem Süden\n' >"www/grüße/straße.txt"
printf 'shouting\n' >www/SHOUT.TXT
: >www/downloads/nothing.bin
# Binary files with every byte value and all kinds of line ends.
bytes=$(printf '\\x%02x' {0..255})
for file in www/images/logo.png www/images/2019/photo.jpg www/downloads/archive.tar.gz; do
  for _ in {1..8}; do printf '%b\r\n\n\r\r\n' "$bytes"; done >"$file"
done
head -c 3000000 /dev/zero >www/downloads/big.iso
head -c 900000 /dev/urandom >www/downloads/film.mp4
ln -s index.html www/start.html
# A listing shows old dates without a time of day, which a backup takes as noon, and recent ones with it.
find . -type f -exec touch -d '2019-06-05 12:00' {} +
touch -d '12:04 40 days ago' www/index.html
chmod -R a+rX .
