#pragma once
// Saves a painter's state on construction and restores it on destruction,
// so a drawing helper cannot leak a pen, brush, font or clip to its caller.

class QPainter;

class DcStateGuard {
public:
    explicit DcStateGuard(QPainter& dc);
    ~DcStateGuard();
    DcStateGuard(const DcStateGuard&) = delete;
    DcStateGuard& operator=(const DcStateGuard&) = delete;

private:
    QPainter& dc;
    int savedDeviceContextId;
};
