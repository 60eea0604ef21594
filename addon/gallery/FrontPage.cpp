// SPDX-License-Identifier: MIT
#include "addon/gallery/FrontPage.h"

#include <fmt/format.h>

#include "addon/gallery/Words.h"
#include "addon/gallery/detail/Pieces.h"
#include "addon/gallery/detail/StyleSheet.h"

namespace addon::gallery {

using detail::HtmlWriter;

namespace {

// Longer texts would make the list heavy for everybody.
constexpr std::size_t kMaxTextLength = 600;   // bytes
constexpr std::size_t kMaxLabelLength = 200;  // bytes

std::string clipped(std::string_view text, std::size_t most) {
  if (text.size() <= most) return std::string(text);
  return std::string(opc::clipUtf8(text, most)) + "\u2026";
}

/// The texts of a card as they are shown.
struct Texts {
  explicit Texts(const Card& card)
      : name(clipped(card.name, kMaxLabelLength)), summary(clipped(card.summary, kMaxTextLength)) {
    author = clipped(card.author, kMaxLabelLength);
    if (card.organization != card.author) {
      organization = clipped(card.organization, kMaxLabelLength);
    }
  }

  std::string name;
  std::string summary;
  std::string author;
  std::string organization;
};

std::string styleSheet() {
  std::string sheet;
  for (const auto part : {detail::kPageStyle, detail::kCardsStyle, detail::kFrontStyle})
    sheet += part;
  return sheet;
}

/// Screenshots and terms are files of the same site; nothing else is loaded, and no script or style
/// applies but those of this page. For some browsers, 'self' stands for no file of a disk.
std::string policyOf(std::string_view sheet) {
  return fmt::format(
      "default-src 'none'; script-src {} 'self' file:; style-src {}; img-src 'self' file:; "
      "base-uri 'none'; form-action 'none'",
      detail::policyHash(detail::kFrontScript), detail::policyHash(sheet));
}

void writeHead(HtmlWriter& html) {
  const std::string sheet = styleSheet();
  const std::string policy = policyOf(sheet);
  html.empty("meta", {{"charset", "utf-8"}});
  html.newLine();
  html.empty("meta", {{"http-equiv", "Content-Security-Policy"}, {"content", policy}});
  html.newLine();
  html.empty("meta", {{"name", "referrer"}, {"content", "no-referrer"}});
  html.empty("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
  html.empty("meta", {{"name", "color-scheme"}, {"content", "light dark"}});
  html.newLine();
  html.element("title", "Add-ons");
  html.newLine();
  html.style(sheet);
  html.script(detail::kFrontScript);
}

void writeControls(HtmlWriter& html) {
  html.element("div", {{"class", "controls"}, {"role", "search"}}, [&] {
    html.element("label", [&] {
      html.text("Search");
      html.empty("input", {{"id", "words"},
                           {"type", "search"},
                           {"placeholder", "Name, summary, author"},
                           {"spellcheck", "false"}});
    });
    html.element("label", [&] {
      html.text("Sort by");
      html.element("select", {{"id", "order"}}, [&] {
        html.element("option", {{"value", "name"}}, "Name");
        html.element("option", {{"value", "date"}}, "Date");
      });
    });
  });
  html.newLine();
}

/// Add-ons without a screenshot differ in their initials and colours.
void writePlaceholder(HtmlWriter& html, std::string_view name) {
  constexpr unsigned kColors = 8;
  unsigned color = 0;
  for (const char c : name) color = (color * 31 + static_cast<unsigned char>(c)) % kColors;
  html.element(
      "div",
      {{"class", fmt::format("thumbnail g{}", color)}, {"data-initial", initialOf(wordsOf(name))}},
      "");
}

void writeAuthor(HtmlWriter& html, const Texts& texts) {
  if (texts.author.empty() && texts.organization.empty()) return;
  html.element("p", {{"class", "who"}}, [&] {
    if (!texts.author.empty()) detail::writeIsolated(html, texts.author);
    if (texts.organization.empty()) return;
    if (!texts.author.empty()) html.text(", ");
    detail::writeIsolated(html, texts.organization);
  });
}

void writeCard(HtmlWriter& html, const Card& card, const Texts& texts) {
  html.element("li", {{"class", "card"}}, [&] {
    if (card.screenshot.empty()) {
      writePlaceholder(html, texts.name);
    } else {
      html.element("div", {{"class", "thumbnail"}}, [&] {
        html.empty("img", {{"src", card.screenshot}, {"alt", ""}, {"loading", "lazy"}});
      });
    }
    html.element("div", {{"class", "body"}}, [&] {
      html.element("h2", {{"dir", "auto"}}, [&] {
        html.element("a", {{"href", card.page}}, texts.name);
      });
      if (!texts.summary.empty()) {
        html.element("p", {{"class", "what"}, {"dir", "auto"}}, texts.summary);
      }
      writeAuthor(html, texts);
      html.element("div", {{"class", "which"}}, [&] {
        html.element("span", {{"class", "chip"}}, [&] {
          html.text("Version ");
          detail::writeIsolated(html, clipped(card.version, kMaxLabelLength));
        });
        if (!card.license.empty()) {
          html.element("bdi", clipped(card.license, kMaxLabelLength));
        }
        if (!card.modified.empty()) detail::writeDate(html, card.modified);
      });
    });
  });
  html.newLine();
}

/// A line that holds nothing that could end the text of a script.
std::string termsOf(const Texts& texts) {
  return fmt::format("{}|{}|{}{}\n", wordsOf(texts.name), wordsOf(texts.summary),
                     wordsOf(texts.author), wordsOf(texts.organization));
}

}  // namespace

void writeFrontPage(const FrontPage& list, const std::function<void(std::string_view)>& page,
                    const std::function<void(std::string_view)>& terms) {
  const std::string sequence = fmt::format("{}", list.sequence);
  terms(fmt::format("kraddonTerms({},`\n", sequence));
  HtmlWriter html(page);
  html.doctype();
  html.element("html", {{"lang", "en"}}, [&] {
    html.newLine();
    html.element("head", [&] { writeHead(html); });
    html.newLine();
    html.element("body", {{"class", "front"}, {"data-sequence", sequence}}, [&] {
      html.element("a", {{"class", "skip"}, {"href", "#main"}}, "Skip to the add-ons");
      html.newLine();
      html.element("header", {{"class", "hero"}}, [&] {
        html.element("h1", "Add-ons");
        html.element("p", {{"class", "count"}, {"id", "count"}, {"role", "status"}},
                     detail::counted(list.addons, "add-on"));
      });
      html.newLine();
      writeControls(html);
      html.element("main", {{"id", "main"}, {"tabindex", "-1"}}, [&] {
        html.element("ul", {{"class", "cards"}, {"id", "list"}}, [&] {
          list.visit([&](const Card& card) {
            const Texts texts(card);
            writeCard(html, card, texts);
            terms(termsOf(texts));
          });
        });
      });
      html.newLine();
      html.element("footer", [&] {
        html.element("p", "Made with kraddon index. This page loads nothing from elsewhere.");
      });
      html.newLine();
    });
  });
  html.newLine();
  html.flush();
  terms("`);\n");
}

}  // namespace addon::gallery
