// Marks what libHostUtil exports; everything else is compiled with hidden visibility.

#pragma once

#define HOSTUTIL_EXPORT __attribute__((visibility("default")))
