#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

namespace vento::simulator {

/// A word of the remote's memory. One that was never written reads as 255, 255.
struct Word {
    std::uint8_t first = 255;
    std::uint8_t second = 255;

    friend bool operator==(const Word&, const Word&) = default;
};

/// Words of a memory as runs, each under the offset of its first word. A run that reaches the end of the
/// memory goes on at offset 0.
using WordRuns = std::map<std::uint16_t, std::vector<Word>>;

/// What a remote keeps when it is put away.
struct RemoteContents {
    /// The free-section bits, 16 for TV, 32 for DTT, 64 for SAT: clear where a section holds a programme.
    std::uint8_t free = 16 + 32 + 64;
    WordRuns memory;

    friend bool operator==(const RemoteContents&, const RemoteContents&) = default;
};

struct RemoteSetup {
    std::uint8_t version = 196;
    std::vector<std::uint16_t> sections = {256, 4352, 8448};  ///< word offsets, 255 of them at the most
    RemoteContents contents;
    /// The remote comes before the transmitter with that poll, counted from 1, and answers it. With 0 it has
    /// been there from the start.
    std::uint32_t arrivesAtPoll = 0;
    /// Once it has been worked with and this many polls in a row have followed, the remote is taken away.
    /// With 0 it stays.
    std::uint32_t leavesAfterPolls = 0;
    /// The polls for which then no remote lies there; behind them comes another, as this one was at first.
    std::uint32_t awayForPolls = 0;
};

/// The remote: what it makes of the send bytes that a transmitter passes on to it.
class Remote {
  public:
    static constexpr std::size_t kMemoryWords = 65536;

    /// The pace of a frame: how many times the transmitter's own LinkFactor it carries.
    static constexpr unsigned kCommandPace = 1;
    static constexpr unsigned kBlockDataPace = 4;

    explicit Remote(const RemoteSetup& setup);

    /// Takes the send bytes of one frame. True if the remote was there, heard them at the pace that it waits
    /// for and knew what to do with them: its answer then stands in `reply` from the front on, as far as it
    /// fits, and the rest of `reply` is as it was. False otherwise: `reply` is unchanged, and the remote is
    /// back at the start, where it waits for a command.
    [[nodiscard]] bool Receive(std::span<const std::uint8_t> sendBytes, unsigned pace,
                               std::span<std::uint8_t> reply);

    [[nodiscard]] RemoteContents Contents() const;
    void SetContents(const RemoteContents& contents);

  private:
    class Answer;

    /// What the next frame has to be.
    enum class Awaiting : std::uint8_t {
        command,
        prefixedCommand,
        blockHeader,
        blockData,
        verifyRange,
        flagValue,
        activation,
        readRange,
    };

    [[nodiscard]] bool IsInReach(std::span<const std::uint8_t> sendBytes);
    void ComeAndGo(bool isPoll);
    [[nodiscard]] std::size_t ExpectedSize(Awaiting awaiting) const;
    [[nodiscard]] bool TakeCommand(std::uint8_t command, Answer& answer);
    void PutSections(Answer& answer) const;
    [[nodiscard]] bool TakePrefixedCommand(std::uint8_t command, Answer& answer);
    void TakeBlockHeader(std::span<const std::uint8_t> header);
    void TakeBlockData(std::span<const std::uint8_t> data, Answer& answer);
    void TakeFlagValue(std::uint8_t value, Answer& answer);
    void Verify(std::span<const std::uint8_t> range, Answer& answer) const;
    void Read(std::span<const std::uint8_t> range, Answer& answer) const;

    std::uint8_t version_;
    std::vector<std::uint16_t> sections_;
    RemoteContents first_;  ///< what the next remote comes with
    std::uint32_t leavesAfterPolls_;
    std::uint32_t awayForPolls_;
    std::uint32_t pollsToArrival_;
    std::uint32_t pollsInARow_ = 0;
    bool workedWith_ = false;
    std::uint8_t free_ = 0;
    std::vector<Word> memory_;
    Awaiting awaiting_ = Awaiting::command;
    std::uint16_t blockOffset_ = 0;
    std::uint8_t blockSize_ = 0;   ///< bytes of data that the header announced
    std::uint8_t blockCheck_ = 0;  ///< the check sum of the header's bytes
};

}  // namespace vento::simulator
