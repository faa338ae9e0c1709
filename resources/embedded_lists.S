// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Puts the two property lists of a helper into its executable, byte for byte. The build defines VANTRELL_INFO_PLIST and
// VANTRELL_LAUNCHD_PLIST as the quoted paths of the files.

#if defined(__APPLE__)

// Nothing refers to the contents: without no_dead_strip the linker drops them.
        .section __TEXT,__info_plist,regular,no_dead_strip
        .incbin VANTRELL_INFO_PLIST

        .section __TEXT,__launchd_plist,regular,no_dead_strip
        .incbin VANTRELL_LAUNCHD_PLIST

#else

// Allocated, so that stripping keeps them and the executable's descriptor covers them.
        .section __info_plist, "a", %progbits
        .incbin VANTRELL_INFO_PLIST

        .section __launchd_plist, "a", %progbits
        .incbin VANTRELL_LAUNCHD_PLIST

// Without this an object made from assembler asks for an executable stack.
        .section .note.GNU-stack, "", %progbits

#endif
