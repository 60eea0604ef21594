# SPDX-License-Identifier: MIT
# Ruby's rubyzip. The protocol is that of protocol.py.
require "digest"
require "zip"

$stdout.sync = true
Zip.warn_invalid_date = false

def items(path)
  Zip::File.open(path) do |archive|
    archive.map do |entry|
      name = entry.name.b.unpack1("H*")
      content = entry.directory? ? "" : entry.get_input_stream.read.to_s
      if entry.directory?
        raise "a folder with content" if entry.size != 0
        "d #{name}"
      elsif entry.symlink?
        "l #{name}"
      else
        "f #{name} #{content.bytesize} #{Digest::SHA256.hexdigest(content)}"
      end
    end
  end
end

$stdin.each_line(chomp: true) do |path|
  begin
    lines = items(path) + ["."]
  rescue StandardError, NotImplementedError => fault
    lines = ["! #{fault.message.dump[0, 200]}"]
  end
  puts ["= #{path}", *lines]
end
