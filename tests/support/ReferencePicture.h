#pragma once
// Comparing what a window shows with a reference picture in tests/data.
//
// The picture is written to the test's temporary folder as `shown_name`, so a
// failure names a file to look at. With TELA_WRITE_REFERENCES set in the
// environment, the one call that passes `writes_reference` also replaces the
// reference first: look at it before committing it. Pixels may differ by one
// step a channel, since the display roads round translucency in different
// orders.

#include "headless/HeadlessRootWindow.h"
#include "headless/PngFile.h"
#include "support/PixelCompare.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

inline ::testing::AssertionResult shows_reference(Headless::RootWindow& window, const std::string& reference_name,
                                                  const std::string& shown_name, bool writes_reference = true)
{
    const std::string reference = std::string(TELA_TEST_DATA) + "/" + reference_name;
    const std::string shown = ::testing::TempDir() + shown_name;
    if (!window.snapshot(shown.c_str()))
        return ::testing::AssertionFailure() << "could not write " << shown;
    if (std::getenv("TELA_WRITE_REFERENCES") && writes_reference && !window.snapshot(reference.c_str()))
        return ::testing::AssertionFailure() << "could not write " << reference;
    const auto expected = Headless::loadPng(reference.c_str());
    if (!expected)
        return ::testing::AssertionFailure() << reference_name
                                             << " missing; run with TELA_WRITE_REFERENCES=1 and look at it";
    const int differing = differing_pixels(*Headless::loadPng(shown.c_str()), *expected, 1);
    if (differing != 0)
        return ::testing::AssertionFailure() << differing << " pixels differ from " << reference_name << "; see "
                                             << shown;
    return ::testing::AssertionSuccess();
}
