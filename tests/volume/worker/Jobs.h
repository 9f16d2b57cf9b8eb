#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <random>
#include <string>

class HostProcess;

/// What a worker process does with the production in `mFolder`, at random, over and over.
class Job {
public:
    Job(HostProcess& host, std::string folder, unsigned seed);

    /// One step of the job called `name`: "take", "move", "save", "copy", "duplicate", "add", "save-as",
    /// "trash" or "shuffle". False for an unknown name.
    bool Step(const std::string& name);

private:
    void Take();
    void Move();
    void Save();
    void Copy();
    /// A copy beside it of "Reels", or of project 0.
    void Duplicate();
    void Add();
    void SaveAsCopy();
    void Trash();
    void Shuffle();

    void RenameProject();
    void MoveProject();
    void RenameFolder();
    void MoveFolder();
    void Restore();

    std::string PickProject();
    /// Any folder but the trash's inside; the production's too.
    std::string PickFolder();
    std::string MakeName();

    HostProcess& mHost;
    const std::string mFolder;
    std::mt19937 mRandom;
};
