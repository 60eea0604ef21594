// SPDX-License-Identifier: MIT
#include "tool/report/Schemas.h"

#include "addon/packaging/Documents.h"
#include "tool/json/JsonSchema.h"

namespace tool::report {

std::vector<Schema> schemas() {
  std::vector<Schema> all{{"manifest", manifestSchema},
                          {"info", infoSchema},
                          {"list", listSchema},
                          {"verify", verifySchema},
                          {"diff", diffSchema},
                          {"build", buildSchema},
                          {"policy", policySchema},
                          {"infos", infosSchema},
                          {"signatures", signaturesSchema},
                          {"index-result", indexResultSchema},
                          {"search", searchSchema},
                          {"root", rootSchema},
                          {"index", indexSchema},
                          {"shard", shardSchema},
                          {"record", recordSchema}};
  for (const auto* table : addon::packaging::documents()) {
    all.push_back({table->name(), [table] { return json::schema::document(*table); }});
  }
  return all;
}

}  // namespace tool::report
