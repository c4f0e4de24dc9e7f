# Shared by the scripts beside this folder: where the project is, and how to speak.
# Source it; it changes nothing but the variables and functions it defines.

project_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
scripts="$project_root/scripts"

say() { printf '==> %s\n' "$*"; }
die() { printf 'error: %s\n' "$*" >&2; exit 1; }
