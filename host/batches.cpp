#include "batches.h"

std::span<Record> Batches::Read(std::span<Record> records) {
  std::size_t size = 0;
  {
    const std::lock_guard lock(mutex_);
    for (; size < records.size() && !ended_; ++size) {
      Record& record = records[size];
      record.next = manifest_.ReadRecord(record.entry);
      if (record.next == Manifest::Next::End) {
        ended_ = true;
        break;
      }
      record.number = ++records_read_;
      if (progress_ != nullptr) progress_->Advance(manifest_);
    }
  }
  const std::span<Record> batch = records.first(size);
  for (Record& record : batch) record.next = manifest_.Decode(record.next, record.entry);
  return batch;
}

bool Batches::AwaitTurn(std::uint64_t first) {
  std::unique_lock lock(mutex_);
  turn_ended_.wait(lock, [&] { return failed_ || records_written_ + 1 == first; });
  return !failed_;
}

void Batches::EndTurn(std::uint64_t last) {
  const std::lock_guard lock(mutex_);
  records_written_ = last;
  turn_ended_.notify_all();
}

void Batches::Fail() {
  const std::lock_guard lock(mutex_);
  ended_ = true;
  failed_ = true;
  turn_ended_.notify_all();
}
