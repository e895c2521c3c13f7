#include "platform/zip/ZipPacker.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <memory>
#include <system_error>
#include <unordered_set>
#include <utility>

#include "platform/system/LocalTime.h"
#include "platform/zip/ZipCrypto.h"
#include "platform/zip/ZipDeflate.h"
#include "platform/zip/ZipDirectory.h"
#include "platform/zip/ZipFormat.h"
#include "platform/zip/ZipOutput.h"
#include "platform/zip/ZipWalk.h"

namespace quillmoor::zip {
namespace {

/// Maximum number of small files and folders in one job.
constexpr std::size_t kMostItems = 64;
/// Jobs in progress per worker; limits the memory used.
constexpr std::size_t kJobsPerWorker = 3;
constexpr std::size_t kDirectoryInMemory = std::size_t{8} << 20;

std::string inBytes(std::int64_t count) {
  return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

/// A file being packed.
struct Source {
  Entry entry;
  std::string path;
  FileState state;  ///< when it was opened
  std::optional<std::string_view> password;
  std::int64_t read = 0;
  std::string readError;
};

/// What went wrong with a file that was read to its end or to a read error; "" when nothing did.
std::string changeOf(const Source& source, const FileState& after) {
  const std::string part = "; the archive has its first " + inBytes(source.read);
  if (!source.readError.empty()) return source.readError + part;
  if (source.read < source.state.size) return "shrank while it was packed: " + source.path + part;
  if (after.size > source.state.size) return "grew while it was packed: " + source.path + part;
  if (after != source.state) return "was changed while it was packed: " + source.path;
  return "";
}

/// The reading side of a file of more than one block.
struct LargeFile {
  std::shared_ptr<Source> source;
  InputFile file;
  bool deflate = true;
  std::vector<std::uint8_t> tail;  ///< the last bytes read, at most kDictionary
};

/// A job and the items that its pieces belong to.
struct Batch {
  struct Item {
    std::shared_ptr<Source> source;
    bool folder = false;
    bool first = false;  ///< the first block of a large file
    std::string error;   ///< to be reported when the item is finished
  };
  Job job;
  std::vector<Item> items;  ///< a folder has no piece, every other item has one
};

/// Reads the sources once and fills batches.
class Reader {
 public:
  Reader(const PackRequest& request, const SegmentNames& names, PackEvents& events, ZipResult& result)
      : request_(request), names_(names), events_(events), result_(result) {
    archiveFolder_ = names.folder().empty() ? "." : names.folder();
  }

  /// Fills an empty batch; false when there is nothing left.
  bool fill(Batch& batch) {
    for (;;) {
      events_.checkAborted();
      if (batch.items.size() >= kMostItems) return true;
      if (large_) {
        if (batch.items.empty()) addBlock(batch);
        return true;
      }
      if (!waiting_ && !openNext(batch)) return !batch.items.empty();
      if (!waiting_) continue;  // a folder
      if (waiting_->source->state.size > static_cast<std::int64_t>(kBlock)) {
        beginLarge();
      } else if (batch.job.input.size() + static_cast<std::size_t>(waiting_->source->state.size) > kBlock) {
        return true;
      } else {
        addWhole(batch);
      }
    }
  }

 private:
  struct Opened {
    std::shared_ptr<Source> source;
    InputFile file;
  };

  void error(const std::string& description) {
    ++result_.errors;
    events_.error(description);
  }

  static void describe(Entry& entry, const FileState& state) {
    entry.modified = state.modifiedSeconds;
    entry.modifiedLocal = UtcToLocal(std::chrono::sys_seconds(std::chrono::seconds(state.modifiedSeconds)));
    entry.attributes = state.attributes;
    entry.hostSystem = kArchiveHostSystem;
  }

  /// Rejects duplicate names. A single walk has none, so the check is skipped then.
  bool isNew(const Walk::Item& item) {
    if (request_.sources.size() < 2 || seen_.insert(item.name).second) return true;
    if (!item.folder) error("not packed, since the archive already has a file of this name: " + item.path);
    return false;
  }

  /// Puts the next file into `waiting_`, or the next folder into the batch. False when there is neither.
  bool openNext(Batch& batch) {
    for (;;) {
      events_.checkAborted();
      if (!walk_ && !beginWalk()) return false;
      std::optional<Walk::Item> item = walk_->next();
      if (!item) {
        walk_.reset();
        continue;
      }
      if (item->name.size() > kLongestName) {
        error("not packed, since its name is too long for an archive: " + item->path);
        continue;
      }
      if (!isNew(*item)) continue;
      try {
        auto source = std::make_shared<Source>();
        source->path = item->path;
        source->entry.name = item->name;
        if (item->folder) {
          describe(source->entry, fileState(item->path));
          batch.items.push_back({std::move(source), true, false, {}});
          return true;
        }
        InputFile file(item->path, false);
        source->state = file.state();
        source->password = password_;
        source->entry.encrypted = password_.has_value();
        describe(source->entry, source->state);
        waiting_.emplace(Opened{std::move(source), std::move(file)});
        return true;
      } catch (const std::system_error& failure) {
        error(failure.what());
      }
    }
  }

  bool beginWalk() {
    if (nextSource_ == request_.sources.size()) return false;
    const PackSource& source = request_.sources[nextSource_++];
    password_ = source.password;
    const auto excluded = [this](const std::string& folder, std::string_view name) {
      return names_.maybePart(name) && sameFile(folder, archiveFolder_);
    };
    try {
      walk_ = std::make_unique<Walk>(splitWildcardPath(source.pattern).value(), source.recurse, excluded,
                                     [this](const std::string& description) { error(description); });
    } catch (const std::system_error& failure) {
      throw ZipError(ZipErrorNumber::folderNotFound, failure.what());
    }
    return true;
  }

  /// Reads up to `bytes.size()` bytes. A read error ends the file here and is reported at its end.
  std::size_t read(InputFile& file, Source& source, std::span<std::uint8_t> bytes) {
    std::size_t got = 0;
    try {
      got = file.read(bytes);
    } catch (const std::system_error& failure) {
      source.readError = failure.what();
    }
    source.read += static_cast<std::int64_t>(got);
    result_.inputBytes += static_cast<std::int64_t>(got);
    return got;
  }

  std::string change(const InputFile& file, const Source& source) const {
    try {
      return changeOf(source, file.state());
    } catch (const std::system_error& failure) {
      return failure.what();
    }
  }

  void addWhole(Batch& batch) {
    Opened opened = std::move(*waiting_);
    waiting_.reset();
    Source& source = *opened.source;
    std::vector<std::uint8_t>& input = batch.job.input;
    Piece piece;
    piece.begin = input.size();
    input.resize(piece.begin + static_cast<std::size_t>(source.state.size));
    piece.size = read(opened.file, source, std::span(input).subspan(piece.begin));
    input.resize(piece.begin + piece.size);
    piece.password = source.password;
    std::string error = change(opened.file, source);
    batch.job.pieces.push_back(piece);
    batch.items.push_back({std::move(opened.source), false, false, std::move(error)});
  }

  void beginLarge() {
    Opened opened = std::move(*waiting_);
    waiting_.reset();
    large_ =
        std::make_unique<LargeFile>(LargeFile{std::move(opened.source), std::move(opened.file), true, {}});
    Source& source = *large_->source;
    large_->deflate = !looksIncompressible(large_->file, source.state.size);
    source.entry.method = large_->deflate ? kDeflated : kStored;
    // Upper bound of the packed size: 5 bytes per 64 KiB at worst, and the encryption overhead.
    const auto longest = static_cast<std::uint64_t>(source.state.size + source.state.size / 4096 + 1024);
    source.entry.zip64Local = longest >= kNone32;
  }

  /// Samples the whole file.
  bool looksIncompressible(const InputFile& file, std::int64_t size) {
    constexpr std::int64_t kPlaces = 6;
    constexpr std::size_t kProbe = std::size_t{32} << 10;
    std::vector<std::uint8_t> probe(kProbe);
    for (std::int64_t i = 0; i < kPlaces; ++i) {
      const std::int64_t at = (size - static_cast<std::int64_t>(kProbe)) / (kPlaces - 1) * i;
      try {
        if (file.readAt(at, probe) < kProbe || !probe_.incompressible(probe)) return false;
      } catch (const std::system_error&) {
        return false;  // reading the file will report it
      }
    }
    return true;
  }

  void addBlock(Batch& batch) {
    LargeFile& large = *large_;
    Source& source = *large.source;
    const bool first = source.read == 0;
    Piece piece;
    piece.deflate = large.deflate;
    piece.begin = piece.dictionary = large.tail.size();
    std::vector<std::uint8_t>& input = batch.job.input;
    input = large.tail;
    const std::int64_t wanted = std::min(static_cast<std::int64_t>(kBlock), source.state.size - source.read);
    input.resize(piece.begin + static_cast<std::size_t>(wanted));
    piece.size = read(large.file, source, std::span(input).subspan(piece.begin));
    input.resize(piece.begin + piece.size);
    const bool last = source.read == source.state.size || static_cast<std::int64_t>(piece.size) < wanted;
    piece.part = last ? Piece::Part::lastBlock : Piece::Part::block;
    std::string error = last ? change(large.file, source) : "";
    if (large.deflate && !last) {
      const std::size_t tail = std::min(kDictionary, input.size());
      large.tail.assign(input.end() - static_cast<std::ptrdiff_t>(tail), input.end());
    }
    batch.job.pieces.push_back(piece);
    batch.items.push_back({large.source, false, first, std::move(error)});
    if (last) large_.reset();
  }

  const PackRequest& request_;
  const SegmentNames& names_;
  PackEvents& events_;
  ZipResult& result_;
  std::string archiveFolder_;
  std::size_t nextSource_ = 0;
  std::unique_ptr<Walk> walk_;
  std::optional<std::string_view> password_;
  std::optional<Opened> waiting_;
  std::unique_ptr<LargeFile> large_;
  std::unordered_set<std::string> seen_;
  CompressibilityProbe probe_;
};

/// Writes batches in reading order.
class Writer {
 public:
  Writer(Output& output, PackEvents& events, ZipResult& result)
      : output_(output), events_(events), result_(result), directory_(output.spool(), kDirectoryInMemory) {}

  void write(Batch& batch) {
    auto piece = batch.job.pieces.begin();
    for (Batch::Item& item : batch.items) {
      if (item.folder) {
        begin(item.source->entry);
        directory_.add(centralHeader(item.source->entry));
        ++result_.folders;
      } else if (piece->part == Piece::Part::whole) {
        writeWhole(*item.source, *piece++);
        finishFile(*item.source, item.error);
      } else {
        writeBlock(item, *piece++);
      }
    }
  }

  /// Writes the central directory and the end records.
  void end() {
    End end;
    bool begun = false;
    directory_.forEach([&](std::string_view header) {
      events_.checkAborted();
      output_.keepTogether(header.size());
      const SegmentPlace place = output_.place();
      if (!begun) {
        begun = true;
        end.directoryDisk = place.disk;
        end.directoryOffset = static_cast<std::uint64_t>(place.offset);
      } else if (place.disk != end.disk) {
        end.entriesOnDisk = 0;
      }
      end.disk = place.disk;
      ++end.entriesOnDisk;
      end.directorySize += header.size();
      output_.write(header);
    });
    end.entries = directory_.entries();
    output_.keepTogether(kLongestEnd);
    const SegmentPlace place = output_.place();
    if (place.disk != end.disk) end.entriesOnDisk = 0;
    end.disk = place.disk;
    end.endOffset = static_cast<std::uint64_t>(place.offset);
    if (!begun) {
      end.directoryDisk = place.disk;
      end.directoryOffset = end.endOffset;
    }
    output_.write(endRecords(end));
  }

 private:
  /// Writes the local header. Unknown sizes are patched in later.
  void begin(Entry& entry) {
    const std::string header = localHeader(entry);
    output_.keepTogether(header.size());
    const SegmentPlace place = output_.place();
    entry.disk = place.disk;
    entry.offset = static_cast<std::uint64_t>(place.offset);
    output_.write(header);
  }

  void writeWhole(Source& source, const Piece& piece) {
    Entry& entry = source.entry;
    entry.method = piece.deflated ? kDeflated : kStored;
    entry.crc = piece.crc;
    entry.size = piece.size;
    entry.packedSize = piece.packed.size() + (entry.encrypted ? kAesOverhead : 0);
    begin(entry);
    if (entry.encrypted) {
      output_.write(piece.salt);
      output_.write(piece.verifier);
    }
    output_.write(piece.packed);
    if (entry.encrypted) output_.write(piece.code);
  }

  void writeBlock(Batch::Item& item, Piece& piece) {
    Source& source = *item.source;
    Entry& entry = source.entry;
    if (item.first) {
      largeAes_.reset();
      begin(entry);
      if (entry.encrypted) {
        const Salt salt = freshSalt();
        largeAes_ = std::make_unique<AesEntry>(*source.password, salt);
        output_.write(salt);
        output_.write(largeAes_->verifier());
        entry.packedSize = kAesOverhead;
      }
    }
    entry.crc = item.first ? piece.crc : combineCrc(entry.crc, piece.crc, piece.size);
    entry.size += piece.size;
    entry.packedSize += piece.packed.size();
    if (largeAes_) largeAes_->encrypt(piece.packed);
    output_.write(piece.packed);
    if (piece.part == Piece::Part::lastBlock) {
      if (largeAes_) output_.write(largeAes_->code());
      output_.patch({entry.disk, static_cast<std::int64_t>(entry.offset)}, localHeader(entry));
      finishFile(source, item.error);
    } else {
      events_.progress(
          {ZipStatus::inProgress, entry.name, source.state.size, static_cast<std::int64_t>(entry.size)});
    }
  }

  void finishFile(const Source& source, const std::string& error) {
    const Entry& entry = source.entry;
    directory_.add(centralHeader(entry));
    ++result_.files;
    if (!error.empty()) {
      ++result_.errors;
      events_.error(error);
    }
    ZipProgress progress{ZipStatus::inProgress, entry.name, source.state.size,
                         static_cast<std::int64_t>(entry.size)};
    events_.progress(progress);
    progress.status = ZipStatus::done;
    events_.progress(std::move(progress));
  }

  Output& output_;
  PackEvents& events_;
  ZipResult& result_;
  Directory directory_;
  std::unique_ptr<AesEntry> largeAes_;  ///< of the large file being written
};

void packAll(const PackRequest& request, PackEvents& events, ZipResult& result, Output& output) {
  if (request.stubPath) {
    std::optional<InputFile> stub;
    try {
      stub.emplace(*request.stubPath, true);
    } catch (const std::system_error& failure) {
      throw ZipError(ZipErrorNumber::cannotRead, failure.what());
    }
    output.writeStub(*stub);
  }
  output.start();
  Writer writer(output, events, result);
  Reader reader(request, output.names(), events, result);
  // Declared after the batches: it must end their jobs before they are destroyed.
  std::deque<std::unique_ptr<Batch>> underWay;
  std::vector<std::unique_ptr<Batch>> spare;
  DeflateWorkers workers;
  bool more = true;
  for (;;) {
    while (more && underWay.size() < kJobsPerWorker * workers.threads()) {
      if (spare.empty()) spare.push_back(std::make_unique<Batch>());
      std::unique_ptr<Batch> batch = std::move(spare.back());
      spare.pop_back();
      batch->job.input.clear();
      batch->job.pieces.clear();
      batch->items.clear();
      more = reader.fill(*batch);
      if (!more) break;
      underWay.push_back(std::move(batch));
      workers.submit(underWay.back()->job);
    }
    if (underWay.empty()) break;
    std::unique_ptr<Batch> batch = std::move(underWay.front());
    underWay.pop_front();
    workers.wait(batch->job);
    events.checkAborted();
    writer.write(*batch);
    spare.push_back(std::move(batch));
  }
  writer.end();
}

}  // namespace

ZipResult pack(const PackRequest& request, PackEvents& events) {
  ZipResult result;
  try {
    Output output(SegmentNames(request.path, request.stubPath.has_value()), request.segmentBytes,
                  request.stubPath.has_value());
    packAll(request, events, result, output);
    events.drain();
    result.paths = output.finish();
    result.outputBytes = output.totalBytes();
  } catch (const std::system_error& failure) {
    throw ZipError(ZipErrorNumber::cannotWrite, failure.what());
  } catch (const ZipError&) {
    throw;
  } catch (const std::exception& failure) {
    throw ZipError(ZipErrorNumber::internal, std::string("cannot pack: ") + failure.what());
  }
  return result;
}

}  // namespace quillmoor::zip
