// resume ROOT: the resume records of interrupted uploads and downloads of a sync root, with
// what each still has to transfer.
#include "CliCommand.h"
#include "base/Directory.h"
#include "base/Exception.h"
#include "docmgr/public/ncIRelayMgr.h"

namespace {

std::string Bytes(int64_t bytes) {
  const char* units[] = {"B", "KB", "MB", "GB", "TB"};
  double value = static_cast<double>(bytes);
  int unit = 0;
  while ((value >= 1024 || value <= -1024) && unit < 4) {
    value /= 1024;
    ++unit;
  }
  char text[32];
  std::snprintf(text, sizeof text, unit ? "%.1f %s" : "%.0f %s", value, units[unit]);
  return text;
}

// What an upload's block list says is left.
struct BlocksLeft {
  bool known = false;   // false before the first block was sent (empty list)
  bool open = false;    // the list ends in an open range "A-": the last block is not known yet
  bool readable = true;
  uint32_t count = 0;   // blocks in the closed part of the list
};

BlocksLeft CountBlocks(ncIRelayMgr* relay, const base::String& list) {
  BlocksLeft left;
  try {
    left.known = relay->GetUnuploadNum(list, left.count);
  } catch (const base::Exception&) {
    left.readable = false;
  }
  left.open = list.find(u"-\"") != base::String::npos;
  return left;
}

std::string Describe(const BlocksLeft& left) {
  if (!left.readable) return "unreadable list";
  if (!left.known) return "not started";
  std::string text = std::to_string(left.count);
  if (left.open) text += " + open range";
  return text;
}

void PrintJson(ncIRelayMgr* relay, const std::vector<ncUploadNonius>& uploads,
               const std::vector<ncDownloadNonius>& downloads) {
  std::printf("{\"uploads\": [");
  for (size_t i = 0; i < uploads.size(); ++i) {
    const ncUploadNonius& u = uploads[i];
    const BlocksLeft left = CountBlocks(relay, u.unUploadBlocks);
    std::printf("%s\n  {\"srcPath\": %s, \"destPath\": %s, \"status\": %d, \"ratios\": %.4f, \"size\": %lld, "
                "\"partSize\": %lld, \"unUploadBlocks\": %s, \"blocksLeft\": ",
                i ? "," : "", JsonText(Narrow(u.srcPath)).c_str(), JsonText(Narrow(u.destPath)).c_str(), u.status,
                u.ratios, static_cast<long long>(u.size), static_cast<long long>(u.partSize),
                JsonText(Narrow(u.unUploadBlocks)).c_str());
    if (left.known && left.readable) std::printf("%u", left.count);
    else std::printf("null");
    std::printf(", \"openRange\": %s}", left.open ? "true" : "false");
  }
  std::printf("],\n\"downloads\": [");
  for (size_t i = 0; i < downloads.size(); ++i) {
    const ncDownloadNonius& d = downloads[i];
    std::printf("%s\n  {\"srcPath\": %s, \"destPath\": %s, \"status\": %d, \"ratios\": %.4f, \"size\": %lld, "
                "\"range\": %lld, \"bytesLeft\": %lld}",
                i ? "," : "", JsonText(Narrow(d.srcPath)).c_str(), JsonText(Narrow(d.destPath)).c_str(), d.status,
                d.ratios, static_cast<long long>(d.size), static_cast<long long>(d.range),
                static_cast<long long>(d.size > d.range ? d.size - d.range : 0));
  }
  std::printf("]}\n");
}

void PrintTables(ncIRelayMgr* relay, const std::vector<ncUploadNonius>& uploads,
                 const std::vector<ncDownloadNonius>& downloads) {
  if (uploads.empty() && downloads.empty()) {
    std::printf("no interrupted transfers\n");
    return;
  }
  std::printf("uploads: %zu\n", uploads.size());
  if (!uploads.empty()) std::printf("  %6s  %6s  %-18s  %10s  %s\n", "STATUS", "DONE", "BLOCKS LEFT", "SIZE", "FILE");
  for (const ncUploadNonius& u : uploads) {
    std::printf("  %6d  %5.1f%%  %-18s  %10s  %s\n", u.status, u.ratios * 100,
                Describe(CountBlocks(relay, u.unUploadBlocks)).c_str(), Bytes(u.size).c_str(),
                Narrow(u.srcPath).c_str());
    if (!u.unUploadBlocks.empty()) std::printf("  %42s blocks %s\n", "", Narrow(u.unUploadBlocks).c_str());
  }
  std::printf("downloads: %zu\n", downloads.size());
  if (!downloads.empty())
    std::printf("  %6s  %6s  %-18s  %10s  %s\n", "STATUS", "DONE", "LEFT", "SIZE", "FILE");
  for (const ncDownloadNonius& d : downloads) {
    std::printf("  %6d  %5.1f%%  %-18s  %10s  %s\n", d.status, d.ratios * 100,
                Bytes(d.size > d.range ? d.size - d.range : 0).c_str(), Bytes(d.size).c_str(),
                Narrow(d.srcPath).c_str());
  }
}

int Resume(CliContext& context, const std::vector<std::string>& args) {
  if (args.size() != 1 || args[0].empty() || args[0][0] == '-') {
    std::fprintf(stderr, "usage: docmgr-cli resume ROOT\n");
    return 2;
  }
  if (!base::Directory::exists(Wide(args[0]))) {
    std::fprintf(stderr, "docmgr-cli: resume: no such folder: %s\n", args[0].c_str());
    return 1;
  }
  nsCOMPtr<ncIRelayMgr> relay = nsCOMPtr<ncIRelayMgr>::adopt(context.openRoot(args[0])->GetRelayMgr(u""));
  std::vector<ncUploadNonius> uploads;
  std::vector<ncDownloadNonius> downloads;
  relay->ListUploadNonius(uploads, true);
  relay->ListDownloadNonius(downloads, true);
  if (context.json) PrintJson(relay.get(), uploads, downloads);
  else PrintTables(relay.get(), uploads, downloads);
  return 0;
}

CLI_COMMAND("resume", "ROOT", "interrupted uploads and downloads and what they have left", Resume);

}  // namespace
