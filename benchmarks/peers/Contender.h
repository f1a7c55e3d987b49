#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Peer.h"
#include "Worker.h"

namespace Benchmarks {

/// A peer with the process that changes its setting and the one that sees it change.
class Contender {
public:
    /// `changes`: how many are made in one turn.
    Contender(std::string label, std::unique_ptr<Peer> chosen, int changes);

    /// Makes the changes of one turn, one after the other, after a few that do not count.
    void takeTurn();
    /// The turns since the last round were one round.
    void endRound();

    const std::string& name() const { return title; }
    /// The median of each round, in microseconds.
    const std::vector<double>& medians() const { return roundMedians; }
    /// From the start of each change until the other process knew of it, in microseconds, of all rounds.
    const std::vector<double>& latencies() const { return all; }

private:
    std::vector<double> change(int count);

    std::string title;
    std::unique_ptr<Peer> peer;
    int changesPerTurn;
    Worker setting;
    std::vector<double> ofThisRound;
    std::vector<double> roundMedians;
    std::vector<double> all;
};

}  // namespace Benchmarks
