// SPDX-License-Identifier: MIT
#include "addon/gallery/detail/Pieces.h"
#include "addon/gallery/detail/Sections.h"
#include "addon/packaging/AddonExamples.h"

namespace addon::gallery::detail {

using packaging::Example;
using packaging::ExampleCategory;

namespace {

/// The name of an example, or else of its file.
std::string titleOf(const Example& example) {
  if (!example.name.empty()) return utf8(example.name);
  const std::string file = utf8(example.main.empty() ? example.source : example.main);
  return file.empty() ? "Example without a name" : std::string(lastName(file));
}

/// A placeholder for a missing image: hills and a sun.
void writePlaceholder(HtmlWriter& html, std::string_view why) {
  html.element("div", {{"class", "absent"}}, [&] {
    html.element("svg", {{"viewBox", "0 0 48 32"}, {"aria-hidden", "true"}}, [&] {
      html.element("circle", {{"cx", "36"}, {"cy", "8"}, {"r", "4"}}, "");
      html.element("path", {{"d", "M2 30 16 12l9 11 6-7 15 14z"}}, "");
    });
    if (!why.empty()) html.element("p", "Thumbnail " + std::string(why));
  });
}

void writeThumbnail(HtmlWriter& html, const PageImage& image) {
  html.element("div", {{"class", "thumbnail"}}, [&] {
    // The heading beside it describes the image.
    if (!image.address.empty()) return html.empty("img", {{"src", image.address}, {"alt", ""}});
    writePlaceholder(html, image.absence);
  });
}

void writeImages(HtmlWriter& html, const Example& example, PageImages& images) {
  html.element("details", [&] {
    html.element("summary", counted(example.images.size(), "image"));
    html.element("ul", {{"class", "images"}}, [&] {
      for (const std::u16string& each : example.images) {
        const std::string path = utf8(each);
        const PageImage image = images.file(path);
        html.element("li", [&] {
          if (!image.address.empty()) {
            html.empty("img", {{"src", image.address}, {"alt", lastName(path)}});
          }
          writeCode(html, path);
          if (!image.absence.empty()) html.text(": " + image.absence);
        });
      }
    });
  });
}

void writeFileLine(HtmlWriter& html, std::string_view label, std::string_view path) {
  if (path.empty()) return;
  html.element("p", {{"class", "path small"}}, [&] {
    html.element("span", {{"class", "muted"}}, label);
    html.text(" ");
    writeCode(html, path);
  });
}

void writeExample(HtmlWriter& html, const Example& example, PageImages& images) {
  writeThumbnail(html, images.file(utf8(example.thumbnail)));
  html.element("div", {{"class", "body"}}, [&] {
    html.element("h4", {{"dir", "auto"}}, titleOf(example));
    if (!example.type.empty()) {
      html.element("p", [&] {
        html.element("span", {{"class", "chip"}}, [&] { writeIsolated(html, utf8(example.type)); });
      });
    }
    writeFileLine(html, "Main file", utf8(example.main));
    if (example.source != example.main) writeFileLine(html, "Source", utf8(example.source));
    if (!example.images.empty()) writeImages(html, example, images);
  });
}

void writeCategory(HtmlWriter& html, const ExampleCategory& category, PageImages& images) {
  html.element("h3", {{"dir", "auto"}},
               category.name.empty() ? "Without a category" : utf8(category.name));
  if (category.examples.empty()) {
    html.element("p", {{"class", "muted"}}, "There are no examples in this category.");
    return;
  }
  html.element("ul", {{"class", "cards"}}, [&] {
    for (const Example& example : category.examples) {
      html.element("li", {{"class", "card"}}, [&] { writeExample(html, example, images); });
      html.newLine();
    }
  });
  html.newLine();
}

}  // namespace

void writeExamples(HtmlWriter& html, const Page& page, PageImages& images) {
  for (const ExampleCategory& category : page.get<packaging::AddonExamples>().categories) {
    writeCategory(html, category, images);
  }
}

}  // namespace addon::gallery::detail
