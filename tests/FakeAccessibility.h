#pragma once

#include "platform/Accessibility.h"

// Stands in for the system's accessibility permission while it lives, so that
// no test shows the system's prompt or reads the real account's trust.
class FakeAccessibility final : public Accessibility
{
public:
    FakeAccessibility() { setCurrent(this); }
    ~FakeAccessibility() override { setCurrent(nullptr); }
    FakeAccessibility(const FakeAccessibility &) = delete;
    FakeAccessibility &operator=(const FakeAccessibility &) = delete;

    bool isTrusted() override
    {
        ++queries;
        return trusted;
    }
    void promptForTrust() override { ++prompts; }

    bool trusted = true;
    int queries = 0; // how often trust was asked about
    int prompts = 0; // how often the system's prompt would have shown
};
