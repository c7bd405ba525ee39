# Sourced: where the libraries for Windows lie, outside of the repository. Other options for Qt, another folder.
windows_cache="${XDG_CACHE_HOME:-$HOME/.cache}/kestra-windows"
KESTRA_WINDOWS_PREFIX="$windows_cache/qt-$(cksum <cmake/windows/qt-options | cut -d' ' -f1)"
export KESTRA_WINDOWS_PREFIX

# True when nothing is left to be built there; the stamp is written last.
windows_prefix_is_complete() { [ -e "$KESTRA_WINDOWS_PREFIX/complete" ]; }
