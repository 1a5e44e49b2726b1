# Shell functions that the scripts share; source this file.

say() { printf '==> %s\n' "$*"; }

# Runs a command silently; shows what it printed only where it fails.
quietly() {
  local log status=0
  log=$(mktemp)
  "$@" >"$log" 2>&1 || status=$?
  [ "$status" -eq 0 ] || cat "$log" >&2
  rm -f "$log"
  return "$status"
}

# Builds a configured folder: on a terminal with the line that tells how far it is, else silently where nothing fails.
build_folder() {
  if [ -t 1 ]; then
    cmake --build "$1"
  else
    quietly cmake --build "$1"
  fi
}

as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    echo "Neither root nor sudo: cannot run '$*'" >&2
    return 1
  fi
}

# Prints those of the given Debian packages that are not installed.
missing_packages() {
  local package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q ' installed$' || echo "$package"
  done
}

# Installs those of the given Debian packages that are missing; where none is, needs neither root nor the network.
install_packages() {
  local missing
  mapfile -t missing < <(missing_packages "$@")
  [ "${#missing[@]}" -gt 0 ] || return 0
  say "Installing ${missing[*]}"
  quietly as_root apt-get update -q
  quietly as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "${missing[@]}"
}
