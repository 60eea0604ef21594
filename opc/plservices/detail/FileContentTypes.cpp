// SPDX-License-Identifier: MIT
#include "opc/plservices/detail/FileContentTypes.h"

#include <algorithm>
#include <array>
#include <string>

#include "opc/Text.h"

namespace opc::plservices::detail {
namespace {

struct KnownType {
  std::string_view extension;
  std::string_view type;
};

constexpr std::string_view kText = "text/plain";
constexpr std::string_view kUnknown = "application/octet-stream";

// Sorted by extension.
constexpr std::array kKnownTypes{
    KnownType{"avi", "video/x-msvideo"},
    KnownType{"bat", kText},
    KnownType{"bmp", "image/bmp"},
    KnownType{"c", kText},
    KnownType{"cc", kText},
    KnownType{"cfg", kText},
    KnownType{"cpp", kText},
    KnownType{"css", "text/css"},
    KnownType{"csv", "text/csv"},
    KnownType{"cu", kText},
    KnownType{"doc", "application/msword"},
    KnownType{"docx", "application/vnd.openxmlformats-officedocument.wordprocessingml.document"},
    KnownType{"f", kText},
    KnownType{"f90", kText},
    KnownType{"gif", "image/gif"},
    KnownType{"gz", "application/gzip"},
    KnownType{"h", kText},
    KnownType{"hpp", kText},
    KnownType{"htm", "text/html"},
    KnownType{"html", "text/html"},
    KnownType{"ico", "image/vnd.microsoft.icon"},
    KnownType{"ini", kText},
    KnownType{"jar", "application/java-archive"},
    KnownType{"java", kText},
    KnownType{"jpeg", "image/jpeg"},
    KnownType{"jpg", "image/jpeg"},
    KnownType{"js", "text/javascript"},
    KnownType{"json", "application/json"},
    KnownType{"log", kText},
    KnownType{"m", kText},
    KnownType{"md", "text/markdown"},
    KnownType{"mp3", "audio/mpeg"},
    KnownType{"mp4", "video/mp4"},
    KnownType{"otf", "font/otf"},
    KnownType{"pdf", "application/pdf"},
    KnownType{"png", "image/png"},
    KnownType{"ppt", "application/vnd.ms-powerpoint"},
    KnownType{"pptx", "application/vnd.openxmlformats-officedocument.presentationml.presentation"},
    KnownType{"py", kText},
    KnownType{"rst", kText},
    KnownType{"rtf", "application/rtf"},
    KnownType{"sh", kText},
    KnownType{"sql", "application/sql"},
    KnownType{"svg", "image/svg+xml"},
    KnownType{"tar", "application/x-tar"},
    KnownType{"tex", kText},
    KnownType{"tif", "image/tiff"},
    KnownType{"tiff", "image/tiff"},
    KnownType{"toml", "application/toml"},
    KnownType{"ttf", "font/ttf"},
    KnownType{"txt", kText},
    KnownType{"wav", "audio/x-wav"},
    KnownType{"webp", "image/webp"},
    KnownType{"woff", "font/woff"},
    KnownType{"woff2", "font/woff2"},
    KnownType{"xls", "application/vnd.ms-excel"},
    KnownType{"xlsx", "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"},
    KnownType{"xml", "application/xml"},
    KnownType{"xsd", "application/xml"},
    KnownType{"xsl", "application/xslt+xml"},
    KnownType{"yaml", "application/yaml"},
    KnownType{"yml", "application/yaml"},
    KnownType{"zip", "application/zip"},
};

constexpr bool isBefore(const KnownType& a, const KnownType& b) {
  return a.extension < b.extension;
}
static_assert(std::is_sorted(kKnownTypes.begin(), kKnownTypes.end(), isBefore));

}  // namespace

std::string_view fileContentType(std::string_view extension) {
  const std::string lower = toLowerAscii(extension);
  const auto* const found =
      std::lower_bound(kKnownTypes.begin(), kKnownTypes.end(), KnownType{lower, {}}, isBefore);
  return found != kKnownTypes.end() && found->extension == lower ? found->type : kUnknown;
}

}  // namespace opc::plservices::detail
