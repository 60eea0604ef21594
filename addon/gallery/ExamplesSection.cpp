// SPDX-License-Identifier: MIT
#include "addon/gallery/Pieces.h"
#include "addon/gallery/Sections.h"

namespace addon::gallery {

namespace {

/// The name of an example, or else of its file.
std::string titleOf(const PageExample& example) {
  if (!example.name.empty()) return example.name;
  const std::string& file = example.main.empty() ? example.source : example.main;
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

void writeImages(HtmlWriter& html, const PageExample& example, PageImages& images) {
  html.element("details", [&] {
    html.element("summary", counted(example.images.size(), "image"));
    html.element("ul", {{"class", "images"}}, [&] {
      for (const std::string& path : example.images) {
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

void writeExample(HtmlWriter& html, const PageExample& example, PageImages& images) {
  writeThumbnail(html, images.file(example.thumbnail));
  html.element("div", {{"class", "body"}}, [&] {
    html.element("h4", {{"dir", "auto"}}, titleOf(example));
    if (!example.type.empty()) {
      html.element("p", [&] {
        html.element("span", {{"class", "chip"}}, [&] { writeIsolated(html, example.type); });
      });
    }
    writeFileLine(html, "Main file", example.main);
    if (example.source != example.main) writeFileLine(html, "Source", example.source);
    if (!example.images.empty()) writeImages(html, example, images);
  });
}

void writeCategory(HtmlWriter& html, const PageCategory& category, PageImages& images) {
  html.element("h3", {{"dir", "auto"}},
               category.name.empty() ? "Without a category" : category.name);
  if (category.examples.empty()) {
    html.element("p", {{"class", "muted"}}, "There are no examples in this category.");
    return;
  }
  html.element("ul", {{"class", "cards"}}, [&] {
    for (const PageExample& example : category.examples) {
      html.element("li", {{"class", "card"}}, [&] { writeExample(html, example, images); });
      html.newLine();
    }
  });
  html.newLine();
}

}  // namespace

void writeExamples(HtmlWriter& html, const Page& page, PageImages& images) {
  for (const PageCategory& category : page.categories) writeCategory(html, category, images);
}

}  // namespace addon::gallery
