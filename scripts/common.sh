# Shared by the scripts of this folder and by ./run and ./test: messages, and commands whose output goes to a log.
# shellcheck shell=bash

readonly log=build/setup.log

say() { printf '%s: %s\n' "${0##*/}" "$*" >&2; }

# die <what went wrong> <what to do>
die() {
  say "$1"
  [[ $# -lt 2 ]] || printf '  %s\n' "${@:2}" >&2
  exit 1
}

# quietly <what> <hint> <command...>: runs a command with its output in the log, and shows the log's end if it fails.
quietly() {
  local what=$1 hint=$2
  shift 2
  printf '== %s\n' "$*" >>"$log"
  if ! "$@" >>"$log" 2>&1 </dev/null; then
    tail -n 25 "$log" | cut -c -300 >&2
    die "$what failed; the whole output is in $log" "$hint"
  fi
}

# configure <preset>
configure() {
  quietly "configuring" "Did scripts/setup finish? A stale folder build/$1 can be deleted." cmake --preset "$1"
}

# build <preset> [target...]: configures a preset and builds it, all of it unless targets are named.
build() {
  local preset=$1
  shift
  say "configuring and building the $preset preset (log: $log)"
  configure "$preset"
  quietly "building" "The first line with 'error:' says why." cmake --build --preset "$preset" ${1:+--target "$@"}
}
