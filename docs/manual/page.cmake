# One page of the manual as HTML.
execute_process(COMMAND ${CMARK_GFM} --extension table --to html ${PAGE}
    OUTPUT_VARIABLE BODY COMMAND_ERROR_IS_FATAL ANY)
# Pages and pictures lie side by side; rich text of Qt draws no rules by style sheets.
string(REGEX REPLACE "href=\"([a-z-]+)\\.md" "href=\"\\1.html" BODY "${BODY}")
string(REGEX REPLACE "src=\"\\.\\./(windows/)?" "src=\"" BODY "${BODY}")
string(REPLACE "<table>" "<table border=\"1\" cellspacing=\"0\" cellpadding=\"4\" width=\"100%\" style=\"margin-top:8px; margin-bottom:8px\">" BODY "${BODY}")
string(REGEX MATCH "<h1>([^\n]*)</h1>" heading "${BODY}")
set(TITLE "${CMAKE_MATCH_1}")
configure_file(${TEMPLATE} ${OUTPUT} @ONLY)
