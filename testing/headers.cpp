// The target that the tests' precompiled headers belong to wants a source.
#include <gtest/gtest.h>
