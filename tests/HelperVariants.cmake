# Copyright (c) 2026 Vantrell. All rights reserved.
# SPDX-License-Identifier: LicenseRef-Vantrell

# Helpers that are wrong on purpose: the real program with another information list.
include_guard()
set(information ${PROJECT_BINARY_DIR}/resources/Info.plist)
file(READ ${information} list)

string(REPLACE "<string>2.5</string>" "<string>2.4</string>" older "${list}")
file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/Info-2.4.plist CONTENT "${older}" @ONLY)
string(REPLACE "QELPrivilegedToolOperationSetLM4" "QELNoSuchClass" classless "${list}")
file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/Info-classless.plist CONTENT "${classless}" @ONLY)

vantrell_helper(helper-version-2.4 ${CMAKE_CURRENT_BINARY_DIR}/Info-2.4.plist
                ${PROJECT_BINARY_DIR}/resources/launchd.plist)
vantrell_helper(helper-without-class ${CMAKE_CURRENT_BINARY_DIR}/Info-classless.plist
                ${PROJECT_BINARY_DIR}/resources/launchd.plist)
