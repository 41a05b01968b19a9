-- Dissects the frames of the iPod Accessory Protocol in a capture file of iaptrace:
--
--   iaptrace pcapng session.trace -o session.pcapng
--   tshark -X lua_script:tools/ipod_iap.lua -r session.pcapng
--
-- or copy this file to Wireshark's folder of personal Lua plugins. The protocol is called ipod_iap,
-- because another one is called iap.

-- The name of each command: two digits of the lingo, four of the command.
local commands = {
  [0x000001] = "Identify",
  [0x000002] = "iPodAck",
  [0x000003] = "RequestRemoteUIMode",
  [0x000004] = "ReturnRemoteUIMode",
  [0x000005] = "EnterRemoteUIMode",
  [0x000006] = "ExitRemoteUIMode",
  [0x000007] = "RequestiPodName",
  [0x000008] = "ReturniPodName",
  [0x000009] = "RequestiPodSoftwareVersion",
  [0x00000A] = "ReturniPodSoftwareVersion",
  [0x00000B] = "RequestiPodSerialNum",
  [0x00000C] = "ReturniPodSerialNum",
  [0x00000D] = "RequestiPodModelNum",
  [0x00000E] = "ReturniPodModelNum",
  [0x00000F] = "RequestLingoProtocolVersion",
  [0x000010] = "ReturnLingoProtocolVersion",
  [0x000013] = "IdentifyDeviceLingoes",
  [0x000023] = "NotifyiPodStateChange",
  [0x000027] = "GetAccessoryInfo",
  [0x000028] = "RetAccessoryInfo",
  [0x020000] = "ContextButtonStatus",
  [0x020004] = "AudioButtonStatus",
  [0x040001] = "iPodAck",
  [0x04000C] = "GetIndexedPlayingTrackInfo",
  [0x04000D] = "ReturnIndexedPlayingTrackInfo",
  [0x040012] = "RequestProtocolVersion",
  [0x040013] = "ReturnProtocolVersion",
  [0x040014] = "RequestiPodName",
  [0x040015] = "ReturniPodName",
  [0x040016] = "ResetDbSelection",
  [0x040017] = "SelectDbRecord",
  [0x040018] = "GetNumberCategorizedDbRecords",
  [0x040019] = "ReturnNumberCategorizedDbRecords",
  [0x04001A] = "RetrieveCategorizedDatabaseRecords",
  [0x04001B] = "ReturnCategorizedDatabaseRecord",
  [0x04001C] = "GetPlayStatus",
  [0x04001D] = "ReturnPlayStatus",
  [0x04001E] = "GetCurrentPlayingTrackIndex",
  [0x04001F] = "ReturnCurrentPlayingTrackIndex",
  [0x040020] = "GetIndexedPlayingTrackTitle",
  [0x040021] = "ReturnIndexedPlayingTrackTitle",
  [0x040022] = "GetIndexedPlayingTrackArtistName",
  [0x040023] = "ReturnIndexedPlayingTrackArtistName",
  [0x040024] = "GetIndexedPlayingTrackAlbumName",
  [0x040025] = "ReturnIndexedPlayingTrackAlbumName",
  [0x040026] = "SetPlayStatusChangeNotification",
  [0x040027] = "PlayStatusChangeNotification",
  [0x040028] = "PlayCurrentSelection",
  [0x040029] = "PlayControl",
  [0x04002C] = "GetShuffle",
  [0x04002D] = "ReturnShuffle",
  [0x04002E] = "SetShuffle",
  [0x04002F] = "GetRepeat",
  [0x040030] = "ReturnRepeat",
  [0x040031] = "SetRepeat",
  [0x040032] = "SetDisplayImage",
  [0x040033] = "GetMonoDisplayImageLimits",
  [0x040034] = "ReturnMonoDisplayImageLimits",
  [0x040035] = "GetNumPlayingTracks",
  [0x040036] = "ReturnNumPlayingTracks",
  [0x040037] = "SetCurrentPlayingTrack",
  [0x040038] = "SelectSortDbRecord",
  [0x040039] = "GetColorDisplayImageLimits",
  [0x04003A] = "ReturnColorDisplayImageLimits",
  [0x0A0000] = "AccAck",
  [0x0A0002] = "GetAccSampleRateCaps",
  [0x0A0003] = "RetAccSampleRateCaps",
  [0x0A0004] = "TrackNewAudioAttributes",
}

local lingoes = {
  [0x00] = "General",
  [0x01] = "Microphone",
  [0x02] = "SimpleRemote",
  [0x03] = "DisplayRemote",
  [0x04] = "ExtendedInterface",
  [0x0A] = "DigitalAudio",
}

local statuses = {
  [0] = "ok",
  [1] = "unknown-category",
  [2] = "failed",
  [3] = "out-of-resources",
  [4] = "bad-parameter",
  [5] = "unknown-id",
  [6] = "pending",
  [7] = "not-authenticated",
}

-- Where the text of a reply begins in its data.
local texts = {
  [0x000008] = 0,
  [0x00000C] = 0,
  [0x00000E] = 4,
  [0x040015] = 0,
  [0x04001B] = 4,
  [0x040021] = 0,
  [0x040023] = 0,
  [0x040025] = 0,
}

-- The acknowledgements: a status, then the id of a command.
local acknowledgements = { [0x000002] = true, [0x040001] = true, [0x0A0000] = true }

local ipod_iap = Proto("ipod_iap", "iPod Accessory Protocol")
local fields = {
  length = ProtoField.uint16("ipod_iap.length", "Length"),
  lingo = ProtoField.uint8("ipod_iap.lingo", "Lingo", base.HEX, lingoes),
  command = ProtoField.uint16("ipod_iap.command", "Command", base.HEX),
  name = ProtoField.string("ipod_iap.name", "Name of the command"),
  data = ProtoField.bytes("ipod_iap.data", "Data"),
  text = ProtoField.string("ipod_iap.text", "Text", base.UNICODE),
  status = ProtoField.uint8("ipod_iap.status", "Status", base.DEC, statuses),
  acknowledged = ProtoField.string("ipod_iap.acknowledged", "Acknowledged command"),
  checksum = ProtoField.uint8("ipod_iap.checksum", "Checksum", base.HEX),
}
ipod_iap.fields = fields
local wrongChecksum =
  ProtoExpert.new("ipod_iap.checksum.wrong", "Wrong checksum", expert.group.CHECKSUM, expert.severity.ERROR)
local noFrame =
  ProtoExpert.new("ipod_iap.no_frame", "Not a whole frame", expert.group.MALFORMED, expert.severity.ERROR)
ipod_iap.experts = { wrongChecksum, noFrame }

local direction = Field.new("frame.packet_flags_direction")

local function nameOf(key)
  return commands[key] or string.format("unknown command %06X", key)
end

-- Returns where the payload begins and its length; nothing when there is no whole frame.
local function payloadOf(buffer)
  local start = 0
  if buffer:len() > 0 and buffer(0, 1):uint() == 0xFF then start = 1 end
  if buffer:len() < start + 2 or buffer(start, 1):uint() ~= 0x55 then return nil end
  local length, from = buffer(start + 1, 1):uint(), start + 2
  if length == 0 then
    if buffer:len() < start + 4 then return nil end
    length, from = buffer(start + 2, 2):uint(), start + 4
  end
  if buffer:len() ~= from + length + 1 then return nil end
  return from, length, start + 1
end

local function isCorrect(buffer, first)
  local sum = 0
  for i = first, buffer:len() - 1 do sum = sum + buffer(i, 1):uint() end
  return sum % 256 == 0
end

local function showDirection(pinfo)
  local flags = direction()
  if flags == nil then return end
  local isFromHost = flags.value == 2
  pinfo.cols.src = isFromHost and "host" or "iPod"
  pinfo.cols.dst = isFromHost and "iPod" or "host"
end

local function addText(tree, data, from)
  local length = 0
  while from + length < data:len() and data(from + length, 1):uint() ~= 0 do length = length + 1 end
  if length == 0 then return "" end
  tree:add(fields.text, data(from, length), data(from, length):string(ENC_UTF_8))
  return ' "' .. data(from, length):string(ENC_UTF_8) .. '"'
end

local function addAcknowledgement(tree, data, lingo)
  tree:add(fields.status, data(0, 1))
  local width = lingo == 0x04 and 2 or 1
  if data:len() < 1 + width then return "" end
  local name = nameOf(lingo * 0x10000 + data(1, width):uint())
  tree:add(fields.acknowledged, data(1, width), name)
  local status = data(0, 1):uint()
  return string.format(" %s %s", name, statuses[status] or tostring(status))
end

-- Adds the data. Returns what the list of packets shows of it.
local function addData(tree, data, key, lingo)
  tree:add(fields.data, data)
  if acknowledgements[key] then return addAcknowledgement(tree, data, lingo) end
  if texts[key] and data:len() > texts[key] then return addText(tree, data, texts[key]) end
  return ""
end

local function addMessage(tree, buffer, from, length)
  local lingo = buffer(from, 1):uint()
  tree:add(fields.lingo, buffer(from, 1))
  local width = lingo == 0x04 and 2 or 1
  if length < 1 + width then return "a frame without a command" end
  local key = lingo * 0x10000 + buffer(from + 1, width):uint()
  tree:add(fields.command, buffer(from + 1, width))
  tree:add(fields.name, buffer(from + 1, width), nameOf(key))
  local shown = nameOf(key)
  local rest = length - 1 - width
  if rest > 0 then shown = shown .. addData(tree, buffer(from + 1 + width, rest), key, lingo) end
  return shown
end

function ipod_iap.dissector(buffer, pinfo, root)
  pinfo.cols.protocol = "ipod_iap"
  showDirection(pinfo)
  local tree = root:add(ipod_iap, buffer())
  local from, length, checked = payloadOf(buffer)
  if from == nil or length == 0 then
    tree:add_proto_expert_info(noFrame)
    pinfo.cols.info = "not a whole frame"
    return
  end
  tree:add(fields.length, buffer(checked, from - checked), length)
  local shown = addMessage(tree, buffer, from, length)
  tree:add(fields.checksum, buffer(from + length, 1))
  if not isCorrect(buffer, checked) then
    tree:add_proto_expert_info(wrongChecksum)
    shown = shown .. " [wrong checksum]"
  end
  pinfo.cols.info = shown
end

DissectorTable.get("wtap_encap"):add(wtap.USER0, ipod_iap)
