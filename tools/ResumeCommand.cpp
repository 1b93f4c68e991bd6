// resume ROOT: the resume records of interrupted uploads and downloads of a sync root, with
// what each still has to transfer.
#include "CacheCliSupport.h"
#include "CliCommand.h"
#include "Translation.h"
#include "docmgr/Exception.h"
#include "docmgr/ncIRelayMgr.h"

namespace {

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
  if (!left.readable) return Tr("unreadable list");
  if (!left.known) return Tr("not started");
  std::string text = std::to_string(left.count);
  if (left.open) text += std::string(" + ") + Tr("open range");
  return text;
}

void PrintJson(ncIRelayMgr* relay, const std::vector<ncUploadNonius>& uploads,
               const std::vector<ncDownloadNonius>& downloads) {
  JsonWriter json;
  json.beginObject().key("uploads").beginArray();
  for (const ncUploadNonius& u : uploads) {
    const BlocksLeft left = CountBlocks(relay, u.unUploadBlocks);
    json.beginObject().member("srcPath", Narrow(u.srcPath)).member("destPath", Narrow(u.destPath));
    json.member("status", u.status).member("statusName", TransferStatusName(u.status)).member("ratios", u.ratios);
    json.member("size", u.size).member("partSize", u.partSize).member("unUploadBlocks", Narrow(u.unUploadBlocks));
    json.key("blocksLeft");
    if (left.known && left.readable) json.value(left.count);
    else json.null();
    json.member("openRange", left.open).endObject();
  }
  json.endArray().key("downloads").beginArray();
  for (const ncDownloadNonius& d : downloads) {
    json.beginObject().member("srcPath", Narrow(d.srcPath)).member("destPath", Narrow(d.destPath));
    json.member("status", d.status).member("statusName", TransferStatusName(d.status)).member("ratios", d.ratios);
    json.member("size", d.size).member("range", d.range).member("bytesLeft", d.size > d.range ? d.size - d.range : 0);
    json.endObject();
  }
  json.endArray().endObject().print();
}

void PrintTables(ncIRelayMgr* relay, const std::vector<ncUploadNonius>& uploads,
                 const std::vector<ncDownloadNonius>& downloads) {
  if (uploads.empty() && downloads.empty()) {
    std::printf("%s\n", Tr("no interrupted transfers"));
    return;
  }
  const std::string header = "  " + Pad(Tr("STATUS"), 12) + "  " + Pad(Tr("DONE"), 6) + "  ";
  std::printf("%s\n", Counted(uploads.size(), "upload", "uploads").c_str());
  if (!uploads.empty())
    std::printf("%s%s  %s  %s\n", header.c_str(), Pad(Tr("BLOCKS LEFT"), 18).c_str(), Pad(Tr("SIZE"), 10).c_str(), Tr("FILE"));
  for (const ncUploadNonius& u : uploads) {
    std::printf("  %s  %5.1f%%  %s  %s  %s\n", Pad(TransferStatusName(u.status), 12).c_str(), u.ratios * 100,
                Pad(Describe(CountBlocks(relay, u.unUploadBlocks)), 18).c_str(), Pad(SizeText(u.size), 10).c_str(),
                Printable(Narrow(u.srcPath)).c_str());
    if (!u.unUploadBlocks.empty())
      std::printf("  %42s %s %s\n", "", Tr("blocks"), Printable(Narrow(u.unUploadBlocks)).c_str());
  }
  std::printf("%s\n", Counted(downloads.size(), "download", "downloads").c_str());
  if (!downloads.empty())
    std::printf("%s%s  %s  %s\n", header.c_str(), Pad(Tr("LEFT"), 18).c_str(), Pad(Tr("SIZE"), 10).c_str(), Tr("FILE"));
  for (const ncDownloadNonius& d : downloads) {
    std::printf("  %s  %5.1f%%  %s  %s  %s\n", Pad(TransferStatusName(d.status), 12).c_str(), d.ratios * 100,
                Pad(SizeText(d.size > d.range ? d.size - d.range : 0), 18).c_str(), Pad(SizeText(d.size), 10).c_str(),
                Printable(Narrow(d.srcPath)).c_str());
  }
}

int Resume(CliContext& context, const std::vector<std::string>& args) {
  if (args.size() != 1 || args[0].empty() || args[0][0] == '-') UsageError("resume");
  nsCOMPtr<ncIRelayMgr> relay = nsCOMPtr<ncIRelayMgr>::adopt(context.openRoot(CheckSyncRoot(args[0], true))->GetRelayMgr(u""));
  std::vector<ncUploadNonius> uploads;
  std::vector<ncDownloadNonius> downloads;
  relay->ListUploadNonius(uploads, true);
  relay->ListDownloadNonius(downloads, true);
  if (context.json) PrintJson(relay.get(), uploads, downloads);
  else PrintTables(relay.get(), uploads, downloads);
  return kExitOk;
}

CLI_COMMAND("resume", "ROOT", "interrupted uploads and downloads and what they have left", Resume);

}  // namespace
