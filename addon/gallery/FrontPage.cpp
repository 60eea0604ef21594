// SPDX-License-Identifier: MIT
#include "addon/gallery/FrontPage.h"

#include "addon/gallery/detail/Pieces.h"
#include "addon/gallery/detail/StyleSheet.h"

namespace addon::gallery {

namespace {

// Screenshots are files of the same site; nothing else is loaded.
constexpr std::string_view kFrontPagePolicy =
    "default-src 'none'; style-src 'unsafe-inline'; img-src 'self' file:; base-uri 'none'; "
    "form-action 'none'";

void writeHead(detail::HtmlWriter& html) {
  html.empty("meta", {{"charset", "utf-8"}});
  html.empty("meta", {{"http-equiv", "Content-Security-Policy"}, {"content", kFrontPagePolicy}});
  html.empty("meta", {{"name", "referrer"}, {"content", "no-referrer"}});
  html.empty("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
  html.empty("meta", {{"name", "color-scheme"}, {"content", "light dark"}});
  html.newLine();
  html.element("title", "Add-ons");
  html.newLine();
  html.style(detail::kPageStyle);
}

void writeCard(detail::HtmlWriter& html, const Card& card) {
  html.element("li", {{"class", "card"}}, [&] {
    if (!card.screenshot.empty()) {
      html.empty("img", {{"src", card.screenshot}, {"alt", ""}, {"loading", "lazy"}});
    }
    html.element("h2", {{"dir", "auto"}}, [&] {
      html.element("a", {{"href", card.page}}, card.name);
    });
    html.element("p", {{"dir", "auto"}}, card.summary);
    html.element("p", {{"class", "by"}}, [&] {
      detail::writeIsolated(html, card.version);
      const std::string& author = card.author.empty() ? card.organization : card.author;
      if (!author.empty()) {
        html.text(" by ");
        detail::writeIsolated(html, author);
      }
      if (!card.modified.empty()) {
        html.text(", ");
        detail::writeDate(html, card.modified);
      }
    });
  });
  html.newLine();
}

}  // namespace

void writeFrontPage(const VisitCards& visit, const std::function<void(std::string_view)>& sink) {
  detail::HtmlWriter html(sink);
  html.doctype();
  html.element("html", {{"lang", "en"}}, [&] {
    html.newLine();
    html.element("head", [&] { writeHead(html); });
    html.newLine();
    html.element("body", [&] {
      html.element("h1", "Add-ons");
      html.newLine();
      html.element("ul", {{"class", "cards"}},
                   [&] { visit([&](const Card& card) { writeCard(html, card); }); });
    });
  });
  html.newLine();
  html.flush();
}

}  // namespace addon::gallery
