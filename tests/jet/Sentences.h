#pragma once

#include "jet/Error.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

/// What the operator is told when `action` fails, as it must, with that code.
inline std::string sentenceOf(const std::function<void()>& action, jet::Errc code) {
    try {
        action();
    } catch (const jet::Error& error) {
        EXPECT_EQ(error.code(), code) << error.what();
        return error.what();
    }
    ADD_FAILURE() << "no error";
    return {};
}

/// The code of the error that `action` ends in, as it must.
inline jet::Errc errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const jet::Error& error) {
        EXPECT_STRNE(error.what(), "");
        return error.code();
    }
    ADD_FAILURE() << "no error";
    return jet::Errc::misuse;
}
