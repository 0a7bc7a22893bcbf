// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_BASE_MEMORY_ADDRESS_SANITIZER_H
#define PLATFORM_BASE_MEMORY_ADDRESS_SANITIZER_H

#if defined(__SANITIZE_ADDRESS__)
#define PLATFORM_ADDRESS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define PLATFORM_ADDRESS_SANITIZER
#endif
#endif

namespace platform {

/// Whether AddressSanitizer is in use. Memory is then neither shared between values nor kept, so
/// that it finds every invalid access.
#ifdef PLATFORM_ADDRESS_SANITIZER
constexpr bool kAddressSanitizer = true;
#else
constexpr bool kAddressSanitizer = false;
#endif

} // namespace platform

#endif
