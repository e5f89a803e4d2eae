# Sourced by the other scripts: strict mode, the project's root as the working directory, and a quiet build.
set -euo pipefail
invoked_from=$PWD
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# build_preset <preset> [target...]: configures build/<preset> and builds it, or only the targets; shows the
# configuration's output only when it fails.
build_preset() {
  local preset=$1 log
  shift
  log=$(mktemp)
  if ! cmake --preset "$preset" >"$log" 2>&1; then
    cat "$log" >&2
    rm -f "$log"
    return 1
  fi
  rm -f "$log"
  cmake --build --preset "$preset" ${1+--target "$@"} >&2
}
