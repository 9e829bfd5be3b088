#!/bin/bash
# The manual's words are Portuguese ones, or the shop's own (manual_words.txt).
#   check_spelling.sh <tree>
# Ends with 77 (skipped) where the machine has no dictionary.
set -euo pipefail
cd "$1"
# It fails for want of the dictionary of this machine's language, which nobody asks for.
dictionaries=$(hunspell -D < /dev/null 2>&1 || true)
if ! grep -q '/pt_BR$' <<< "$dictionaries"; then
    echo "skipped: hunspell or its dictionary hunspell-pt-br is not installed"
    exit 77
fi
# Without what is typed or run, addresses and pictures.
unknown=$(sed -e '/^    /d' -e 's/`[^`]*`//g' -e 's/!\?\[\([^]]*\)\]([^)]*)/\1/g' docs/manual/*.md |
    LC_ALL=C.UTF-8 hunspell -i UTF-8 -d pt_BR -p tests/scripts/manual_words.txt -l | sort -u)
if [ -n "$unknown" ]; then
    printf 'Not Portuguese, and not in tests/scripts/manual_words.txt:\n%s\n' "$unknown"
    exit 1
fi
