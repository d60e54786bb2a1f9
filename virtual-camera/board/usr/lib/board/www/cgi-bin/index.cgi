#!/bin/bash
# The camera's page: what it is called, and what it is.
# shellcheck source=/dev/null
. /usr/lib/board/store.sh

as_html() {
    sed 's/&/\&amp;/g; s/</\&lt;/g; s/>/\&gt;/g; s/"/\&quot;/g'
}

name=$(store_value CAMSYSTEM CameraName | as_html)
model=$(store_value System ModelName | as_html)
brand=$(store_value INFO BrandName | as_html)
cat <<END
Content-Type: text/html; charset=utf-8

<!DOCTYPE html>
<html lang="en">
<title>$name</title>
<h1>$name</h1>
<p>$brand $model
</html>
END
