// SPDX-License-Identifier: MIT
import java.io.BufferedReader;
import java.io.ByteArrayOutputStream;
import java.io.File;
import java.io.FileInputStream;
import java.io.InputStream;
import java.io.InputStreamReader;
import java.io.PrintStream;
import java.nio.charset.StandardCharsets;
import java.security.MessageDigest;
import java.util.ArrayList;
import java.util.Collections;
import java.util.List;
import java.util.zip.ZipEntry;
import java.util.zip.ZipFile;
import java.util.zip.ZipInputStream;
import org.apache.commons.compress.archivers.zip.ZipArchiveEntry;
import org.apache.commons.compress.archivers.zip.ZipArchiveInputStream;

/**
 * The readers of Java ("file" and "stream") and of commons-compress ("commons-file" and
 * "commons-stream"). The protocol is that of protocol.py.
 */
class JavaReaders {
  interface Reader {
    List<String> items(String path) throws Exception;
  }

  static String hex(byte[] bytes) {
    StringBuilder text = new StringBuilder();
    for (byte b : bytes) text.append(String.format("%02x", b));
    return text.toString();
  }

  static String item(String name, byte[] content, boolean isFolder) throws Exception {
    String code = hex(name.getBytes(StandardCharsets.UTF_8));
    if (isFolder && content.length == 0) return "d " + code;
    byte[] digest = MessageDigest.getInstance("SHA-256").digest(content);
    return "f " + code + " " + content.length + " " + hex(digest);
  }

  static List<String> ofFile(String path) throws Exception {
    List<String> lines = new ArrayList<>();
    try (ZipFile archive = new ZipFile(path)) {
      for (ZipEntry entry : Collections.list(archive.entries())) {
        try (InputStream content = archive.getInputStream(entry)) {
          lines.add(item(entry.getName(), content.readAllBytes(), entry.isDirectory()));
        }
      }
    }
    return lines;
  }

  static List<String> ofStream(String path) throws Exception {
    List<String> lines = new ArrayList<>();
    try (ZipInputStream archive = new ZipInputStream(new FileInputStream(path))) {
      for (ZipEntry entry; (entry = archive.getNextEntry()) != null; ) {
        lines.add(item(entry.getName(), archive.readAllBytes(), entry.isDirectory()));
      }
    }
    return lines;
  }

  static String itemOfCommons(ZipArchiveEntry entry, byte[] content) throws Exception {
    if (entry.isUnixSymlink()) return "l " + hex(entry.getName().getBytes(StandardCharsets.UTF_8));
    return item(entry.getName(), content, entry.isDirectory());
  }

  static List<String> ofCommonsFile(String path) throws Exception {
    List<String> lines = new ArrayList<>();
    try (var archive = new org.apache.commons.compress.archivers.zip.ZipFile(new File(path))) {
      for (ZipArchiveEntry entry : Collections.list(archive.getEntries())) {
        try (InputStream content = archive.getInputStream(entry)) {
          lines.add(itemOfCommons(entry, content.readAllBytes()));
        }
      }
    }
    return lines;
  }

  static List<String> ofCommonsStream(String path) throws Exception {
    List<String> lines = new ArrayList<>();
    try (var archive = new ZipArchiveInputStream(new FileInputStream(path))) {
      for (ZipArchiveEntry entry; (entry = archive.getNextZipEntry()) != null; ) {
        if (!archive.canReadEntryData(entry)) throw new Exception("an item cannot be read");
        lines.add(itemOfCommons(entry, archive.readAllBytes()));
      }
    }
    return lines;
  }

  public static void main(String[] arguments) throws Exception {
    Reader reader;
    switch (arguments[0]) {
      case "file": reader = JavaReaders::ofFile; break;
      case "stream": reader = JavaReaders::ofStream; break;
      case "commons-file": reader = JavaReaders::ofCommonsFile; break;
      case "commons-stream": reader = JavaReaders::ofCommonsStream; break;
      default: throw new Exception("unknown reader");
    }
    BufferedReader paths = new BufferedReader(new InputStreamReader(System.in));
    PrintStream out = new PrintStream(System.out, false, StandardCharsets.UTF_8);
    for (String path; (path = paths.readLine()) != null; ) {
      List<String> lines = new ArrayList<>();
      lines.add("= " + path);
      try {
        lines.addAll(reader.items(path));
        lines.add(".");
      } catch (Exception | OutOfMemoryError fault) {
        lines.add("! " + String.valueOf(fault).replaceAll("[^ -~]", " "));
      }
      out.print(String.join("\n", lines) + "\n");
      out.flush();
    }
  }
}
