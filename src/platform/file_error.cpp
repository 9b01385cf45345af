#include "platform/file_error.h"

#include <algorithm>
#include <array>

namespace vento::platform {
namespace {

struct Reason {
    std::errc error;
    Phrase text;
};

// The English texts are those of the C library, which traces and results have always had.
constexpr std::array kReasons{
    Reason{std::errc::no_such_file_or_directory,
           {"Il file o la cartella non esiste", "No such file or directory"}},
    Reason{std::errc::permission_denied, {"Permesso negato", "Permission denied"}},
    Reason{std::errc::operation_not_permitted, {"Operazione non permessa", "Operation not permitted"}},
    Reason{std::errc::is_a_directory, {"È una cartella", "Is a directory"}},
    Reason{std::errc::not_a_directory, {"Non è una cartella", "Not a directory"}},
    Reason{std::errc::no_space_on_device, {"Il disco è pieno", "No space left on device"}},
    Reason{std::errc::read_only_file_system, {"Il disco è di sola lettura", "Read-only file system"}},
    Reason{std::errc::filename_too_long, {"Il nome è troppo lungo", "File name too long"}},
    Reason{std::errc::file_too_large, {"Il file è troppo grande", "File too large"}},
    Reason{std::errc::device_or_resource_busy,
           {"È in uso da un altro programma", "In use by another program"}},
    Reason{std::errc::text_file_busy, {"È un programma in esecuzione", "Text file busy"}},
    Reason{std::errc::io_error, {"Errore di lettura o scrittura", "Input/output error"}},
    Reason{std::errc::no_such_device, {"Il dispositivo non c'è più", "No such device"}},
    Reason{std::errc::not_enough_memory, {"La memoria non basta", "Cannot allocate memory"}},
    Reason{std::errc::broken_pipe, {"Chi doveva ricevere ha smesso", "Broken pipe"}},
};

}  // namespace

Sentence SystemReason(std::error_code error) {
    const auto* const known =
        std::ranges::find_if(kReasons, [error](const Reason& each) { return error == each.error; });
    return known != kReasons.end() ? Sentence(known->text) : Sentence(error.message());
}

FileError FileError::NotRegular() {
    return FileError(Phrase{"Non è un file normale", "Not a regular file"});
}

}  // namespace vento::platform
