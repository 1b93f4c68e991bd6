#include "JournalDemo.h"

#include "CliCommand.h"
#include "docmgr/ncILogMgr.h"
#include "docmgr/ncIRelayMgr.h"

namespace {

void Step(const std::string& title) { std::printf("\n== %s\n", title.c_str()); }

// The demo's own log type and task codes; the client's engine has its own.
const int kDemoLogType = 0;
enum DemoTask { kDownloaded = 1, kUploaded = 2, kRenamed = 3, kDeleted = 4 };

void RecordSyncLog(ncILogMgr* log) {
  struct {
    DemoTask task;
    const char16_t* relPath;
    const char16_t* newName;
    int64_t size;
    const char16_t* remark;
  } const events[] = {
      {kDownloaded, u"readme.txt", u"", 38, u""},
      {kUploaded, u"Projects\\plan.docx", u"", 46, u"first version"},
      {kRenamed, u"项目\\会议纪要.docx", u"会议纪要 (终稿).docx", 52, u""},
      {kUploaded, u"Projects\\Reports\\summary 2026.xlsx", u"", 62, u"it's 100% done"},
      {kDeleted, u"Projects\\old draft.txt", u"", 0, u""},
  };
  int64_t time = 1767225600;  // the demo's clock: seconds, one event a minute
  for (const auto& event : events) {
    ncSyncLogInfo info;
    info.taskType = event.task;
    info.relPath = event.relPath;
    info.newName = event.newName;
    info.size = event.size;
    info.time = time += 60;
    info.remark = event.remark;
    log->RecordSyncLog(kDemoLogType, info);
  }
}

}  // namespace

int DemoJournals(CliContext& context, const std::string& root) {
  ncIDocMgr* docMgr = context.openRoot(root);
  nsCOMPtr<ncILogMgr> log = nsCOMPtr<ncILogMgr>::adopt(docMgr->GetLogMgr());
  nsCOMPtr<ncIRelayMgr> relay = nsCOMPtr<ncIRelayMgr>::adopt(docMgr->GetRelayMgr(u""));

  Step("recording five sync-log entries");
  RecordSyncLog(log.get());
  Step("docmgr-cli log " + root + " --type 0");
  if (int status = RunCommand(context, "log", {root, "--type", "0"})) return status;

  // An upload of a three-block file that stopped before its size was known, and a download
  // that stopped part way.
  const std::string file = root + "/Projects/Reports/summary 2026.xlsx";
  const base::String srcPath = Wide(file);
  ncUploadNonius upload;
  upload.srcPath = srcPath;
  upload.destPath = u"gns://demo/Projects/Reports/summary 2026.xlsx";
  upload.uploadId = u"demo-upload-1";
  upload.partSize = 4 << 20;
  upload.size = 10 << 20;
  upload.unUploadBlocks = u"[\"1-\"]";
  upload.status = 1;
  relay->UpdateUploadNonius(upload);
  ncDownloadNonius download;
  download.srcPath = Wide(root + "/项目/设计文档/产品设计.pdf");
  download.destPath = u"gns://demo/项目/设计文档/产品设计.pdf";
  download.size = 3 << 20;
  download.range = 1 << 20;
  download.ratios = 1.0 / 3;
  download.status = 1;
  relay->UpdateDownloadNonius(download);
  Step("an interrupted upload and download: docmgr-cli resume " + root);
  if (int status = RunCommand(context, "resume", {root})) return status;

  const int32_t lastBlock = 3;
  base::String blocks = upload.unUploadBlocks;
  relay->UpdateUnuploadWithMaxId(lastBlock, blocks);
  relay->UpdateUploadNoniusUnuploadBlocks(srcPath, blocks, 1);
  Step("the upload learns its last block (" + std::to_string(lastBlock) + "): " + Narrow(blocks));
  if (int status = RunCommand(context, "resume", {root})) return status;

  for (int32_t block = 1; block <= lastBlock; ++block) {
    relay->DeleteFormUnupload(blocks, block);
    relay->UpdateUploadNoniusUnuploadBlocks(srcPath, blocks, 1);
    relay->UpdateUploadNonius_Pause(srcPath, static_cast<double>(block) / lastBlock, 1);
    Step("block " + std::to_string(block) + " sent: " + Narrow(blocks));
    if (int status = RunCommand(context, "resume", {root})) return status;
  }
  relay->DeleteUploadNonius(srcPath);
  relay->DeleteDownloadNonius(download.srcPath);
  Step("both transfers finished and their records removed");
  return RunCommand(context, "resume", {root});
}
