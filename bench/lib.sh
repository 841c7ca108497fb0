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
