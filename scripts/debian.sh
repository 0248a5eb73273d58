# Packages of Debian, for the scripts that prepare a machine. Needs scripts/common.sh.
# shellcheck shell=bash

as_root() {
  if [[ $EUID -eq 0 ]]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    say "this needs root: run scripts/setup once as root, or install sudo, or do by hand: $*"
    return 1
  fi
}

installed() { [[ $(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null) == installed ]]; }

apt_install() {
  quietly "installing $*" "Is the network there, and does /etc/apt name a Debian mirror?" \
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y -o DPkg::Lock::Timeout=300 \
    install --no-install-recommends "$@"
}

refresh_package_lists() {
  quietly "refreshing the package lists" "Is the network there, and does /etc/apt name a Debian mirror?" \
    as_root apt-get -q -o DPkg::Lock::Timeout=300 update
}

install_packages() {
  local package missing=()
  for package in "$@"; do
    installed "$package" || missing+=("$package")
  done
  [[ ${#missing[@]} -gt 0 ]] || return 0
  say "installing ${missing[*]}"
  refresh_package_lists
  apt_install "${missing[@]}"
}

# The address of the mirror that this machine takes Debian itself from.
debian_mirror() {
  # shellcheck disable=SC2016  # apt-get puts the values in
  apt-get indextargets --format '$(CREATED_BY) $(ORIGIN) $(LABEL) $(COMPONENT) $(REPO_URI)' |
    awk '$1 == "Packages" && $2 == "Debian" && $3 == "Debian" && $4 == "main" { print $5; exit }'
}
