# Writes a source file that holds the style and the script of HTML reports, with their hashes as a Content-Security-Policy wants
# them: what is in the page runs, and nothing else does.
#
#   cmake -DDIRECTORY=src/report/render/html -DOUTPUT=html_assets.cpp -P cmake/EmbedPage.cmake

# SHA-256 of a file in base64.
function(base64_hash file result)
  file(SHA256 "${file}" hex)
  set(letters "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")
  set(text "")
  # 32 bytes: ten groups of three, and one of two that is filled up with zeros.
  foreach(group RANGE 10)
    math(EXPR at "${group} * 6")
    string(SUBSTRING "${hex}00" ${at} 6 digits)
    foreach(shift 18 12 6 0)
      math(EXPR letter "(0x${digits} >> ${shift}) & 63")
      string(SUBSTRING "${letters}" ${letter} 1 letter)
      string(APPEND text "${letter}")
    endforeach()
  endforeach()
  string(SUBSTRING "${text}" 0 43 text)
  set(${result} "sha256-${text}=" PARENT_SCOPE)
endfunction()

file(READ "${DIRECTORY}/page.css" style)
file(READ "${DIRECTORY}/page.js" script)
base64_hash("${DIRECTORY}/page.css" style_hash)
base64_hash("${DIRECTORY}/page.js" script_hash)
file(WRITE "${OUTPUT}" "// Made by cmake/EmbedPage.cmake out of src/report/render/html.
#include \"report/render/html_assets.h\"

namespace korvel {

const Asset kPageStyle{R\"asset(${style})asset\", \"${style_hash}\"};
const Asset kPageScript{R\"asset(${script})asset\", \"${script_hash}\"};

}  // namespace korvel
")
