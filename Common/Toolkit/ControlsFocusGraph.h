#pragma once
// Which control the arrow keys move the focus to: for each control, its
// neighbours to the left, above, to the right and below (0: none). A screen
// declares its whole graph in one chain of Add calls and calls Move from its
// arrow operation.

#include <vector>

#include "Platform/WinTypes.h"

class CDialog;

class ControlsFocusGraph {
public:
    explicit ControlsFocusGraph(CDialog& parent);

    ControlsFocusGraph& Add(UINT sourceCtrlId, UINT leftCtrlId, UINT topCtrlId, UINT rightCtrlId,
                            UINT bottomCtrlId);
    // direction: 0 left, 1 up, 2 right, 3 down. The focus stays when the
    // focused control has no node or no neighbour that way.
    void Move(int direction);

private:
    struct Node {
        UINT source;
        UINT neighbours[4];  // left, top, right, bottom
    };
    bool CheckControl(UINT ctrlId) const;

    CDialog& parent;
    std::vector<Node> nodes;
};
