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

# Copies Debian's JPEG wallpaper photographs into the folder $1 and makes each record 72 dpi
# (only the density bytes change), so that every tool writes the photographs' own pixels. The
# packages come from install_missing gnome-backgrounds mate-backgrounds plasma-workspace-wallpapers.
prepare_photo_corpus() {
    local folder=$1 root
    root="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
    mkdir -p "$folder"
    find /usr/share/backgrounds /usr/share/wallpapers -type f \( -iname '*.jpg' -o -iname '*.jpeg' \) |
        sort | while read -r f; do
        # Plasma names every picture by its size (1920x1080.jpg): keep the folders in the name.
        local name="${f#/usr/share/}"
        name="${name//\//_}"
        cp "$f" "$folder/${name%.*}.jpg"
    done
    python3 "$root/set_density_72.py" "$folder"/*.jpg
}
