#pragma once

namespace host {

/// What a cell is drawn on, while it is being drawn. Passed through by panels. UI thread.
class Drawbot {
public:
    struct Impl;
    explicit Drawbot(Impl& impl) : mImpl(&impl) {}
    Impl& GetImpl() const { return *mImpl; }

private:
    Impl* mImpl;
};

}  // namespace host
