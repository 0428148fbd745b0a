#!/bin/bash
# What a browser makes of the page: it is as wide as a small window and a large one, shows every
# text of a drive as it stands, and has nothing in it but what the page wants.
# Usage: page_test.sh PROGRAM, which is smartprobe-read. Takes Chromium.
. "$(dirname "$0")/program_test.sh"
program=$1
examples=$(dirname "$0")/../examples

# In the place of every product and path what could become markup.
hostile='</title></style><script>document.title=1</script><b onclick="x()">&amp;'\''<!--'
escaped=$(sed 's/&/\&amp;/g; s/</\&lt;/g; s/>/\&gt;/g' <<<"$hostile")
awk -v text="${escaped//&/\\\\&}" '
  /<key>(Product Name|BSD Name)</ { print; getline; sub(/>.*</, ">" text "<") }
  { print }' "$examples/server.plist" >"$work/hostile"
cp "$examples/server.plist" "$examples/storage.plist" "$examples/laptop.report" "$work"
: >"$work/none"

# seen WIDTH: how wide the page is in such a window, its foreign and its running elements, its text.
seen() {
  cat >"$work/window.html" <<END
<iframe src="page.html" width="$1" height="800" style="border: 0" onload="
  const page = this.contentDocument;
  const others = page.querySelectorAll('body :not(h1, h2, h3, p, ul, li, section, dl, div, dt, dd,' +
    'table, caption, thead, tbody, tr, th, td, small, strong, span, svg, rect, a, details, summary,' +
    'figure, figcaption, path, polyline, text)');
  document.title = page.documentElement.scrollWidth + ' ' + others.length + ' ' +
    page.querySelectorAll('script, [onclick]').length + ' ' + page.body.innerText"></iframe>
END
  timeout 60 chromium --headless --hide-scrollbars --no-sandbox --disable-gpu --no-first-run --disable-sync \
    --disable-background-networking --disable-component-update --user-data-dir="$work/profile" \
    --allow-file-access-from-files --dump-dom "file://$work/window.html" 2>/dev/null |
    tr '\n' ' ' | sed -n 's/.*<title>\(.*\)<\/title>.*/\1/p'
}

# is PAGE TEXT: the page fits, and has that text.
is() {
  "$program" --html --output "$work/page.html" "$work/$1" || fail "the page of $1"
  for width in 380 1200; do
    got=$(seen $width)
    [[ $got == "$width 0 0 "*"$2"* ]] || fail "the page of $1, $width pixels wide: $got"
  done
}
is server.plist 'Temperature 42 °C'
is laptop.report 'OK'
is storage.plist 'Lost sectors'
is none 'No drives were found.'
is hostile "$escaped"
[ ! -e "$work/failed" ]
