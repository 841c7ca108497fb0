# Shared by the benchmark scripts: sourced, not run.

# Installs those of the Debian packages named that are not installed yet (as root, or through
# sudo). What only a benchmark needs is installed here, never by the test scripts.
install_missing() {
    local need=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' ||
            need+=("$package")
    done
    [ "${#need[@]}" -eq 0 ] && return 0
    local sudo=""
    [ "$(id -u)" -eq 0 ] || sudo=sudo
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${need[@]}" >/dev/null
}

# Copies Debian's JPEG wallpaper photographs (gnome-, mate- and plasma-workspace- backgrounds)
# into the folder given, each named after its path, and records 72 dpi in each (only the
# density bytes change), so that every tool writes the photographs' own pixels.
copy_wallpaper_jpegs() {
    local dest=$1 root name
    root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
    find /usr/share/backgrounds /usr/share/wallpapers -type f \( -iname '*.jpg' -o -iname '*.jpeg' \) |
        sort | while read -r f; do
        # Plasma names every picture by its size (1920x1080.jpg): keep the folders in the name.
        name="${f#/usr/share/}"
        name="${name//\//_}"
        cp "$f" "$dest/${name%.*}.jpg"
    done
    python3 "$root/bench/set_density_72.py" "$dest"/*.jpg
}
