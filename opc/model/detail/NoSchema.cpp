// SPDX-License-Identifier: MIT
//
// Takes the place of parts of the start of Xerces-C where Xerces-C is linked statically: the types
// of schemas, and tables of character classes for their patterns. No document is read with a
// schema, and making these tables takes longer than everything else that a short command does.

#define LEAVE_OUT(name, part)                                           \
  void name() asm("__wrap__ZN11xercesc_3_214XMLInitializer" part "Ev"); \
  void name() {}

LEAVE_OUT(initializeCharacterClasses, "23initializeRangeTokenMap")
LEAVE_OUT(initializePatterns, "27initializeRegularExpression")
LEAVE_OUT(initializeTypes, "34initializeDatatypeValidatorFactory")
LEAVE_OUT(initializeAttributes, "31initializeGeneralAttributeCheck")
