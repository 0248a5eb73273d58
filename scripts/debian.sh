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

# unpack_from_release <release> <folder> <package...>: unpacks packages of another release of Debian into a folder. The
# machine's own apt sources and lists are left as they are: everything that apt keeps for this stays in a folder of its
# own. apt checks the signature.
unpack_from_release() {
  local release=$1 folder=$2 apt=$PWD/$2/apt keyring=/usr/share/keyrings/debian-archive-keyring.gpg mirror package
  shift 2
  mirror=$(debian_mirror)
  if [[ -z $mirror ]]; then
    refresh_package_lists
    mirror=$(debian_mirror)
  fi
  [[ -n $mirror ]] || die "no Debian mirror found among apt's sources" \
    "Unpack $* of the release $release into $folder with dpkg-deb -x."
  [[ -e /usr/share/keyrings/debian-archive-$release-stable.gpg ]] || apt_install debian-archive-keyring

  rm -rf "$apt"
  mkdir -p "$apt"/{lists,cache,sources}
  printf 'Types: deb\nURIs: %s\nSuites: %s\nComponents: main\nArchitectures: %s\nTargets: Packages\nSigned-By: %s\n' \
    "$mirror" "$release" "$(dpkg --print-architecture)" "$keyring" >"$apt/sources/$release.sources"
  local options=(-q -o Dir::Etc::sourcelist=/dev/null -o "Dir::Etc::sourceparts=$apt/sources"
    -o "Dir::State::lists=$apt/lists" -o "Dir::Cache=$apt/cache" -o APT::Sandbox::User=root)
  local hint="$mirror must hold $release; else unpack $* of it into $folder with dpkg-deb -x."
  quietly "reading the package list of Debian $release" "$hint" apt-get "${options[@]}" \
    -o APT::Update::Error-Mode=any update
  quietly "downloading $*" "$hint" env -C "$apt" apt-get "${options[@]}" download "$@"
  for package in "$apt"/*.deb; do
    quietly "unpacking ${package##*/}" "$hint" dpkg-deb -x "$package" "$folder"
  done
  rm -rf "$apt"
}
