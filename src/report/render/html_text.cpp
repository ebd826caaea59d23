// Escapes text for HTML. Tested by tests/report/html_text_test.cpp.
#include "report/render/html_text.h"

#include "base/characters.h"
#include "base/text.h"

namespace korvel {
namespace {

void AppendEscaped(std::string& html, std::string_view text) {
  for (const char c : text) {
    switch (c) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '"':
        html += "&quot;";
        break;
      case '\'':
        html += "&#39;";
        break;
      default:
        html += c;
    }
  }
}

}  // namespace

std::string Html(std::string_view text) {
  std::string html;
  AppendEscaped(html, OneLine(ValidUtf8(text)));
  return html;
}

std::string SourceLine(std::string_view text) {
  std::string line;
  for (;;) {
    const std::size_t tab = text.find('\t');
    line += OneLine(ValidUtf8(text.substr(0, tab)));
    if (tab == std::string_view::npos) return line;
    line += '\t';
    text.remove_prefix(tab + 1);
  }
}

std::string HtmlLine(std::string_view text) {
  std::string html;
  AppendEscaped(html, SourceLine(text));
  return html;
}

std::string Code(std::string_view text) { return "<code>" + Html(text) + "</code>"; }

std::string Link(const std::string& target, const std::string& content) {
  return target.empty() ? content : "<a href=\"#" + target + "\">" + content + "</a>";
}

std::string HtmlHead(const Asset& script, const std::string& title) {
  std::string html =
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; base-uri 'none'; form-action 'none'; "
      "style-src '";
  html.append(kPageStyle.hash).append("'; script-src '").append(script.hash).append("'\">\n");
  html +=
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<meta name=\"color-scheme\" content=\"light "
      "dark\">\n<title>" +
      title + "</title>\n<style>";
  html += kPageStyle.text;
  return html + "</style>\n</head>\n";
}

}  // namespace korvel
