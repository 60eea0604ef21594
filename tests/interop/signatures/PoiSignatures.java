// SPDX-License-Identifier: MIT
// Prints for each signature of a package whether Apache POI finds it valid, and of whom it is.
import java.io.ByteArrayInputStream;
import java.security.cert.X509Certificate;
import java.util.zip.ZipFile;
import javax.xml.crypto.Data;
import javax.xml.crypto.OctetStreamData;
import javax.xml.crypto.URIReference;
import javax.xml.crypto.URIReferenceException;
import javax.xml.crypto.XMLCryptoContext;
import org.apache.poi.openxml4j.opc.OPCPackage;
import org.apache.poi.openxml4j.opc.PackageAccess;
import org.apache.poi.poifs.crypt.dsig.OOXMLURIDereferencer;
import org.apache.poi.poifs.crypt.dsig.SignatureConfig;
import org.apache.poi.poifs.crypt.dsig.SignatureInfo;
import org.apache.poi.poifs.crypt.dsig.SignaturePart;

public class PoiSignatures {
  // POI has no stream of the part with the core properties, which it reads itself.
  static class WithCoreProperties extends OOXMLURIDereferencer {
    private static final String PART = "/metadata/coreProperties.xml?";
    private final byte[] content;

    WithCoreProperties(String file) throws Exception {
      try (ZipFile zip = new ZipFile(file)) {
        content = zip.getInputStream(zip.getEntry("metadata/coreProperties.xml")).readAllBytes();
      }
    }

    @Override
    public Data dereference(URIReference reference, XMLCryptoContext context)
        throws URIReferenceException {
      if (reference.getURI().startsWith(PART)) {
        return new OctetStreamData(new ByteArrayInputStream(content), reference.getURI(), null);
      }
      return super.dereference(reference, context);
    }
  }

  public static void main(String[] words) throws Exception {
    OPCPackage opened = OPCPackage.open(words[0], PackageAccess.READ);
    SignatureConfig config = new SignatureConfig();
    config.setOpcPackage(opened);
    config.setUriDereferencer(new WithCoreProperties(words[0]));
    SignatureInfo info = new SignatureInfo();
    info.setSignatureConfig(config);
    for (SignaturePart part : info.getSignatureParts()) {
      boolean isValid = part.validate();
      X509Certificate signer = part.getSigner();
      System.out.println((isValid ? "valid " : "broken ")
          + (signer == null ? "" : signer.getSubjectX500Principal().getName()));
    }
    opened.revert();
  }
}
