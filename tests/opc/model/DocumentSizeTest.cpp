// SPDX-License-Identifier: MIT
#include "opc/model/detail/DocumentSize.h"

#include <gtest/gtest.h>

#include <string>

#include "opc/Streams.h"
#include "opc/model/XercesHelper.h"
#include "opc/model/detail/StrictParser.h"

namespace opc::model::detail {
namespace {

bool isRead(const std::string& xml) {
  MemoryInputStream stream(reinterpret_cast<const unsigned char*>(xml.data()), xml.size());
  try {
    return readDocument(stream).size() == xml.size();
  } catch (const InvalidXMLDocument&) {
    return false;
  }
}

bool mayBeWritten(const std::string& xml) {
  try {
    requireReadableDocument(xml, "it");
    return true;
  } catch (const Exception& fault) {
    EXPECT_EQ(fault.code(), ErrorCode::TooLarge);
    return false;
  }
}

TEST(DocumentSize, ADocumentMayBeWrittenUpToTheSizeThatIsRead) {
  const std::string start = "<a>";
  const std::string end = "</a>";
  const std::size_t room = XercesHelper::kMaxDocumentSize - start.size() - end.size();
  std::string xml = start + std::string(room, ' ') + end;

  EXPECT_TRUE(isRead(xml));
  EXPECT_TRUE(mayBeWritten(xml));

  xml += '\n';

  EXPECT_FALSE(isRead(xml));
  EXPECT_FALSE(mayBeWritten(xml));
}

TEST(DocumentSize, RoomEndsAtTheLimitsOfReading) {
  DocumentSize size({100, 2});

  EXPECT_TRUE(size.hasRoomFor({XercesHelper::kMaxDocumentSize - 100, 1}));
  EXPECT_FALSE(size.hasRoomFor({XercesHelper::kMaxDocumentSize - 99, 1}));
  EXPECT_TRUE(size.hasRoomFor({1, XercesHelper::kMaxNodes - 2}));
  EXPECT_FALSE(size.hasRoomFor({1, XercesHelper::kMaxNodes - 1}));
  size.add({50, 5});
  EXPECT_FALSE(size.hasRoomFor({XercesHelper::kMaxDocumentSize - 100, 1}));
  EXPECT_FALSE(size.hasRoomFor({1, XercesHelper::kMaxNodes - 2}));
  size.remove({50, 5});
  EXPECT_TRUE(size.hasRoomFor({XercesHelper::kMaxDocumentSize - 100, XercesHelper::kMaxNodes - 2}));
}

}  // namespace
}  // namespace opc::model::detail
