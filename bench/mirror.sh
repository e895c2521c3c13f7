#!/usr/bin/env bash
# One mirror by quillmoor-run, as the comparison calls it: FTP_HOST, FTP_PORT, FTP_USER, FTP_PASSWORD say from where,
# OUT to where, MODE is 1 for a full and 2 for an incremental run. All else is kept in $HOME.
set -euo pipefail
program=$HOME/quillmoor
export XDG_CONFIG_HOME=$HOME/config
if [ ! -d "$program" ]; then
  mkdir -p "$program"
  cp "$QUILLMOOR_PROGRAMS/quillmoor-run" "$QUILLMOOR_PROGRAMS/quillmoor-config" "$program/"
  for setting in AutoDial AutoHangUp CreateZip; do "$program/quillmoor-config" setting set "$setting" 0; done
fi
"$program/quillmoor-config" setting set BackupMode "$MODE"
rm -f "$program/Profiles.ini"
"$program/quillmoor-config" profile set "$(basename "$OUT")" Host="$FTP_HOST" Port="$FTP_PORT" UserID="$FTP_USER" \
  Password=- SaveTo="$(dirname "$OUT")/" Folder=/ <<<"$FTP_PASSWORD"
exec "$program/quillmoor-run" --assume-network >/dev/null
