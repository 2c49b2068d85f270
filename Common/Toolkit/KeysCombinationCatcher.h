#pragma once
// Catches a hidden key sequence (service functions): keys of the combination
// are collected in the order pressed; any other key starts over.

#include <vector>

#include "Platform/WinTypes.h"

class KeysCombinationCatcher {
public:
    explicit KeysCombinationCatcher(std::vector<UINT> combination);

    // Feeds one key-down; true when the key belongs to the combination.
    bool OnKey(UINT virtualKey);
    // True when the keys caught are the combination, in its order.
    bool IsCaught() const;
    void Reset();

    const std::vector<UINT>& CaughtKeys() const { return caughtKeys; }

private:
    std::vector<UINT> combination;
    std::vector<UINT> caughtKeys;
};
