# Converts one Markdown page to HTML, including the links between pages.
execute_process(COMMAND ${CMARK} --unsafe -e table -e autolink ${PAGE} OUTPUT_VARIABLE body COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "href=\"([^\":]*)\\.md" "href=\"\\1.html" body "${body}")
file(WRITE ${HTML} "<!DOCTYPE html>
<html lang=\"en\">
<head>
<meta charset=\"utf-8\">
<title>Velmorak</title>
<style>
body { font-family: sans-serif; line-height: 1.5; max-width: 50em; margin: 2em auto; padding: 0 1em; color: #222 }
table { border-collapse: collapse } td, th { border: 1px solid #bbb; padding: 0.2em 0.6em; text-align: left }
pre, code { background: #f0f0f0 } pre { padding: 0.6em; overflow: auto } img { max-width: 100% }
</style>
</head>
<body>
${body}</body>
</html>
")
