# Shared by the scripts; to be sourced. Sets `root` and goes there.

set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

say() { printf '\n== %s\n' "$*" >&2; }

as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    say "This needs root: install sudo, or run as root: $*"
    return 1
  fi
}

# Installs what is missing of scripts/packages.
install_packages() {
  local wanted missing=() package
  wanted=$(sed 's/#.*//' scripts/packages)
  for package in $wanted; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
      missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  say "Installing ${missing[*]}"
  as_root apt-get update -qq
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
    "${missing[@]}" >/dev/null
}

# Music for trying things: prints the folder where it is.
fetch_music() {
  local music=$root/build/demo/music folder
  if [ ! -d "$music" ]; then
    say "Fetching the Debian package asc-music (18 minutes of music)"
    folder=$(mktemp -d)
    (
      cd "$folder"
      apt-get download -qq asc-music 2>/dev/null ||
        { as_root apt-get update -qq && apt-get download -qq asc-music; }
    )
    dpkg-deb -x "$folder"/asc-music_*.deb "$folder/unpacked"
    mkdir -p "$(dirname "$music")"
    mv "$folder/unpacked" "$music"
    rm -rf "$folder"
  fi
  echo "$music"
}
