# Shared by the scripts beside this folder: where the project is, how to speak, how long things take.
# Source it; it changes nothing but the variables and functions it defines.

project_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
scripts="$project_root/scripts"

say() { printf '==> %s\n' "$*"; }
die() { printf 'error: %s\n' "$*" >&2; exit 1; }

# Prints what the calling script says about itself in its first comment, if that is asked for, and
# ends it: nothing is installed or built for a question.
help_if_asked() {
  local argument
  for argument in "$@"; do
    case $argument in
      -h|--help) sed -n '2,/^[^#]/{/^#/{s/^# \{0,1\}//;p}}' "$0"; exit 0 ;;
      --) return ;;
    esac
  done
}

as_time() { printf '%d:%02d min' $(($1 / 60)) $(($1 % 60)); }

# Runs a command (further arguments) as the stage called $1, and says how long it took.
stage() {
  local name=$1 began=$SECONDS; shift
  "$@"
  stage_times+=("$(printf '%-42s %s' "$name" "$(as_time $((SECONDS - began)))")")
  say "$name took $(as_time $((SECONDS - began)))"
}
stage_times=()

# Configures a preset when that was not done yet, or when CMake options (-D…) follow. A warning ends
# the build for developers and in CI only: a newer compiler than ours knows new ones.
configure() {
  local preset=$1; shift
  [[ -z ${CI:-} ]] || set -- "$@" -DORVANE_WERROR=ON
  [[ -f $project_root/build/$preset/build.ninja && $# -eq 0 ]] && return
  say "Configuring build/$preset"
  (cd "$project_root" && cmake --preset "$preset" "$@" --log-level=WARNING)
}

# Builds targets (all unless named) of a preset that is configured.
compile() {
  local preset=$1; shift
  say "Building ${*:-everything} in build/$preset"
  (cd "$project_root" && cmake --build --preset "$preset" ${*:+--target "$@"})
}
