# programs.sh   for the tests of whole programs, which source it.
# lay_out PROGRAMS WORK   puts the programs of a build into WORK/program, which they take for their folder, with settings
#                         of their own. Sets `run` and `config` to what starts quillmoor-run and quillmoor-config, and
#                         `windows` to yes where they are programs for Windows, which Wine runs.
# native PATH             the path as those programs know it
# settings_hold TEXT      whether the stored settings hold the text

lay_out() {
  windows=no
  [ ! -e "$1/quillmoor-run.exe" ] || windows=yes
  mkdir -p "$2/program"
  cp "$1/MsSFX.bin" "$2/program/"
  programs_work=$2
  if [ $windows = no ]; then
    cp "$1/quillmoor-run" "$1/quillmoor-config" "$2/program/"
    run=$2/program/quillmoor-run config=$2/program/quillmoor-config
    export XDG_CONFIG_HOME=$2/config
    return
  fi
  mkdir -p "$2/bin"
  local name
  for name in quillmoor-run quillmoor-config; do
    cp "$1/$name.exe" "$2/program/"
    # Lines end in CR LF there; the launcher's hint about 32-bit programs is none of the program's words.
    cat >"$2/bin/$name" <<WRAPPER
#!/usr/bin/env bash
set -o pipefail
status=0
wine "$2/program/$name.exe" "\$@" 2>"$2/bin/errors" | tr -d '\r' || status=\$?
grep -vi wine "$2/bin/errors" | tr -d '\r' >&2
exit \$status
WRAPPER
    chmod +x "$2/bin/$name"
  done
  run=$2/bin/quillmoor-run config=$2/bin/quillmoor-config
  wine reg delete 'HKLM\Software\Tarnick' /f >/dev/null 2>&1 || true    # of the test before
}

native() {
  if [ $windows = no ]; then echo "$1"; else local path=Z:$1; echo "${path//\//\\}"; fi
}

settings_hold() {
  if [ $windows = no ]; then
    tr -d '\0' <"$programs_work/config/quillmoor/registry.reg" | grep -qF -- "$1"    # it may be UTF-16
  else
    wine reg query 'HKLM\Software\Tarnick' /s 2>/dev/null | grep -qF -- "$1"
  fi
}
