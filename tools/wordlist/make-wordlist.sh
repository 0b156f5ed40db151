#!/bin/sh
# Makes resources/wordlist.txt, the words that random patch names are built
# from: 3082 lower-case Latin words, one a line, taken from the head words of
# the FreeDict Latin-German dictionary (Debian package dict-freedict-lat-deu,
# GPL-3+, see resources/LICENSE.wordlist).
#
# The words are those of 3 to 10 letters a to z, sorted in the C locale; of
# those, every word whose rank falls on an even step of count / 3082 is kept,
# so that the list spans the whole alphabet. The result depends only on the
# package's index file.
#
# usage: tools/wordlist/make-wordlist.sh [INDEX] > resources/wordlist.txt
# INDEX defaults to the installed /usr/share/dictd/freedict-lat-deu.index;
# without the package installed, fetch it with
#   apt-get download dict-freedict-lat-deu && dpkg-deb -x dict-freedict-lat-deu_*.deb pkg
# and give pkg/usr/share/dictd/freedict-lat-deu.index.
set -eu
index=${1:-/usr/share/dictd/freedict-lat-deu.index}
[ -r "$index" ] || { echo "make-wordlist: cannot read $index" >&2; exit 1; }
cut -f1 "$index" | LC_ALL=C grep -E '^[a-z]{3,10}$' | LC_ALL=C sort -u |
  awk -v want=3082 '{ w[NR] = $0 } END {
      if (NR < want) { print "make-wordlist: only " NR " words" > "/dev/stderr"; exit 1 }
      for (i = 0; i < want; ++i) print w[1 + int(i * NR / want)]
  }'
