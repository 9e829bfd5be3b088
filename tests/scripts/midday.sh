# shellcheck shell=bash
# It is midday wherever this is sourced: tests take minutes, and the day on which one begins, from which
# due dates are counted, has to be the day on which it ends. Windows' C library knows no zone whose name has
# more than three letters: it goes by that of Greenwich then, beside a system that goes by this one.
export TZ="Loj$(($(date -u +%-H) - 12))"
